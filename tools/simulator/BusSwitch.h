// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/simulator/BusFrame.h"

#include <array>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <vector>

#include "tools/simulator/BoxConfig.h"

namespace tzsim {

class BoxEngine;

/// A channel as a member of a bus.
struct BusPort
{
    BoxEngine *box = nullptr;
    ChannelRef ref;
};
using BusMembers = std::vector<BusPort>;

/// Which channels hear each other. Immutable; a change makes a new one.
class BusTopology
{
public:
    /// The bus of a channel, the channel itself included; empty for a channel that does not exist.
    const BusMembers &members(const ChannelRef &ref) const;

private:
    friend class BusSwitch;
    BusMembers *find(const ChannelRef &ref);
    std::array<std::array<std::vector<BusMembers>, 2>, maxBoxes> m_members; // by box, family, channel
};

/// The virtual buses of a simulator. At first every channel has a bus of its own.
///
/// Threads: any. Readers take a snapshot of the topology and hold no lock while they deliver.
class BusSwitch
{
public:
    BusSwitch();

    void addBox(BoxEngine &box, const BoxConfig &config);
    /// Joins the buses of all these channels to one; false for mixed families or an unknown channel.
    bool join(std::span<const ChannelRef> channels);
    std::shared_ptr<const BusTopology> topology() const;

    /// Responses of simulated LIN slaves, kept for the channel on whose bus they sit.
    void setNodeResponse(const ChannelRef &ref, const LinFrame &frame);
    void clearNodeResponse(const ChannelRef &ref, std::uint8_t id);
    std::optional<LinFrame> nodeResponse(const BusMembers &bus, std::uint8_t id) const;

private:
    mutable std::mutex m_mutex; // protects both
    std::shared_ptr<const BusTopology> m_topology;
    std::map<ChannelRef, std::map<std::uint8_t, LinFrame>> m_nodeResponses;
};

} // namespace tzsim
