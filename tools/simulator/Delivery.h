// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/simulator/BusSwitch.h"

#include <chrono>
#include <optional>

namespace tzsim {

/// Carries frames over the buses for one short while: what it delivers is packed box by box and sent by flush(), at the
/// latest when it ends. For one thread; the caller holds no lock of a box.
class Delivery
{
public:
    using Time = std::chrono::steady_clock::time_point;

    explicit Delivery(const BusSwitch &buses);
    ~Delivery();
    Delivery(const Delivery &) = delete;
    Delivery &operator=(const Delivery &) = delete;

    /// A frame that the host of @p sender transmits: an echo for the sender, a received frame for all others.
    void canFromHost(const ChannelRef &sender, const CanFrame &frame, Time at);
    /// A frame of a node on the bus of @p ref: received by all channels.
    void canFromNode(const ChannelRef &ref, const CanFrame &frame, Time at);

    /// Header and response of the master @p sender.
    void linFromHost(const ChannelRef &sender, const LinFrame &frame, Time at);
    /// A header of the master @p sender, answered by the first that holds a response: a channel, then a node.
    void linHeaderFromHost(const ChannelRef &sender, std::uint8_t id, std::uint8_t checksumType, Time at);
    /// A frame of other nodes alone.
    void linFromNode(const ChannelRef &ref, const LinFrame &frame, Time at);
    /// A header of a master that is not a box.
    void linHeaderFromNode(const ChannelRef &ref, std::uint8_t id, Time at);

    bool anyoneListens(const ChannelRef &ref) const;
    void flush();

private:
    struct Response
    {
        LinFrame frame;
        std::optional<ChannelRef> writer; ///< the channel that holds it; empty for a node
    };
    void touch(const BusPort &port);
    std::optional<Response> findResponse(const BusMembers &bus, const ChannelRef *first, std::uint8_t id) const;
    void answerHeader(const ChannelRef &ref, bool fromHost, const LinFrame &unanswered, Time at);

    const BusSwitch &m_buses;
    const std::shared_ptr<const BusTopology> m_topology;
    std::array<BoxEngine *, maxBoxes> m_touched{};
};

} // namespace tzsim
