// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/simulator/BusSwitch.h"

#include <algorithm>

namespace tzsim {

namespace {

// For a topology that is read and one that is made alike; null for a channel that does not exist.
template <typename Boxes> auto findChannel(Boxes &boxes, const ChannelRef &ref) -> decltype(boxes[0][0].data())
{
    if (ref.box < 0 || ref.box >= maxBoxes || ref.channel < 0)
        return nullptr;
    auto &channels = boxes[static_cast<std::size_t>(ref.box)][ref.family == Family::can ? 0 : 1];
    const auto channel = static_cast<std::size_t>(ref.channel);
    return channel < channels.size() ? &channels[channel] : nullptr;
}

} // namespace

const BusMembers &BusTopology::members(const ChannelRef &ref) const
{
    static const BusMembers none;
    const BusMembers *bus = findChannel(m_members, ref);
    return bus ? *bus : none;
}

BusMembers *BusTopology::find(const ChannelRef &ref)
{
    return findChannel(m_members, ref);
}

BusSwitch::BusSwitch()
    : m_topology(std::make_shared<const BusTopology>())
{
}

void BusSwitch::addBox(BoxEngine &box, const BoxConfig &config)
{
    const std::lock_guard lock(m_mutex);
    auto topology = std::make_shared<BusTopology>(*m_topology);
    const auto fill = [&](Family family, int count) {
        auto &channels = topology->m_members[static_cast<std::size_t>(config.index)][family == Family::can ? 0 : 1];
        channels.clear();
        for (int channel = 0; channel < count; ++channel)
            channels.push_back({BusPort{&box, {config.index, family, channel}}});
    };
    fill(Family::can, config.canChannels);
    fill(Family::lin, config.linChannels);
    m_topology = std::move(topology);
}

bool BusSwitch::join(std::span<const ChannelRef> channels)
{
    const std::lock_guard lock(m_mutex);
    auto topology = std::make_shared<BusTopology>(*m_topology);
    BusMembers bus;
    for (const ChannelRef &ref : channels) {
        const BusMembers *joined = topology->find(ref);
        if (!joined || ref.family != channels.front().family)
            return false;
        bus.insert(bus.end(), joined->begin(), joined->end());
    }
    const auto byRef = [](const BusPort &a, const BusPort &b) { return a.ref < b.ref; };
    const auto sameRef = [](const BusPort &a, const BusPort &b) { return a.ref == b.ref; };
    std::sort(bus.begin(), bus.end(), byRef);
    bus.erase(std::unique(bus.begin(), bus.end(), sameRef), bus.end());
    for (const BusPort &port : bus)
        *topology->find(port.ref) = bus;
    m_topology = std::move(topology);
    return true;
}

std::shared_ptr<const BusTopology> BusSwitch::topology() const
{
    const std::lock_guard lock(m_mutex);
    return m_topology;
}

void BusSwitch::setNodeResponse(const ChannelRef &ref, const LinFrame &frame)
{
    const std::lock_guard lock(m_mutex);
    m_nodeResponses[ref][frame.id] = frame;
}

void BusSwitch::clearNodeResponse(const ChannelRef &ref, std::uint8_t id)
{
    const std::lock_guard lock(m_mutex);
    if (const auto found = m_nodeResponses.find(ref); found != m_nodeResponses.end())
        found->second.erase(id);
}

std::optional<LinFrame> BusSwitch::nodeResponse(const BusMembers &bus, std::uint8_t id) const
{
    const std::lock_guard lock(m_mutex);
    for (const BusPort &port : bus) {
        const auto node = m_nodeResponses.find(port.ref);
        if (node == m_nodeResponses.end())
            continue;
        if (const auto response = node->second.find(id); response != node->second.end())
            return response->second;
    }
    return std::nullopt;
}

} // namespace tzsim
