// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/simulator/BoxState.h"

#include <algorithm>

namespace tzsim {

BoxState::BoxState(const BoxConfig &config)
    : protocol(config)
    , meter(protocol.can.size())
    , canCounters(protocol.can.size())
    , linCounters(protocol.lin.size())
    , canLastTicks(protocol.can.size())
    , linLastTicks(protocol.lin.size())
    , busLoadPeriod(config.busLoadPeriod)
    , heartbeatTimeout(config.heartbeatTimeout)
{
}

void BoxState::powerUp(const BoxConfig &config, Clock::time_point now)
{
    protocol.closeAllChannels();
    protocol.requests.clear();
    protocol.transmits.clear();
    m_packer.clear();
    counters = {};
    link.totals = {};
    hostTotals = {};
    std::fill(canCounters.begin(), canCounters.end(), ChannelCounters());
    std::fill(linCounters.begin(), linCounters.end(), ChannelCounters());
    setClock(config.clockOffset, now);
}

void BoxState::setClock(std::uint64_t ticks, Clock::time_point now)
{
    clock.set(ticks, now);
    std::fill(canLastTicks.begin(), canLastTicks.end(), 0);
    std::fill(linLastTicks.begin(), linLastTicks.end(), 0);
}

int BoxState::openChannels() const
{
    const auto isOpen = [](const auto &channel) { return channel.open; };
    return static_cast<int>(std::count_if(protocol.can.begin(), protocol.can.end(), isOpen) +
                            std::count_if(protocol.lin.begin(), protocol.lin.end(), isOpen));
}

bool BoxState::anyCanOpen() const
{
    return std::any_of(protocol.can.begin(), protocol.can.end(), [](const auto &channel) { return channel.open; });
}

ChannelCounters *BoxState::channelCounters(Family family, int channel)
{
    auto &channels = family == Family::can ? canCounters : linCounters;
    return channel >= 0 && static_cast<std::size_t>(channel) < channels.size()
               ? &channels[static_cast<std::size_t>(channel)]
               : nullptr;
}

BoxCounters BoxState::allCounters() const
{
    BoxCounters all = counters;
    all.datagramsOut = link.totals.datagrams;
    all.bytesOut = link.totals.bytes;
    all.sendErrors = link.totals.errors;
    return all;
}

void BoxState::noteHost(const sockaddr_in &from, std::size_t datagramBytes)
{
    if (link.isHost(from))
        return;
    flush(); // what waits is for the host that was
    link.setHost(from);
    hostHeardAt = Clock::now();
    hostTotals = {};
    hostTotals.rxBytes = static_cast<std::uint32_t>(datagramBytes);
}

std::uint64_t BoxState::stamp(std::uint64_t &last, Clock::time_point at) const
{
    last = std::max(last, clock.at(at));
    return last;
}

void BoxState::deliverCan(std::size_t channel, const CanFrame &frame, std::uint8_t type, Clock::time_point at)
{
    if (channel >= protocol.can.size() || !protocol.can[channel].open)
        return;
    if (!frame.isError())
        meter.addFrame(channel, frame);
    if (silent || !link.host())
        return;
    ++canCounters[channel].framesSent;
    wire::writeCanRecord(reserveRecord(wire::canRecordSize(frame)), static_cast<std::uint8_t>(channel), frame, type,
                         stamp(canLastTicks[channel], at));
}

void BoxState::deliverLin(std::size_t channel, const LinFrame &frame, std::uint8_t direction, Clock::time_point at)
{
    if (channel >= protocol.lin.size() || !protocol.lin[channel].open || silent || !link.host())
        return;
    ++linCounters[channel].framesSent;
    wire::writeLinRecord(reserveRecord(wire::linRecordSize(frame)), static_cast<std::uint8_t>(channel), frame,
                         direction, stamp(linLastTicks[channel], at));
}

bool BoxState::sendTo(const sockaddr_in &to, std::span<const std::uint8_t> bytes)
{
    flush();
    if (silent || !link.sendTo(to, bytes))
        return false;
    if (link.isHost(to))
        hostTotals.txBytes += static_cast<std::uint32_t>(bytes.size());
    return true;
}

void BoxState::flush()
{
    if (m_packer.count() == 0)
        return;
    const std::uint64_t before = link.totals.bytes;
    link.sendToHost(m_packer);
    hostTotals.txBytes += static_cast<std::uint32_t>(link.totals.bytes - before);
}

std::uint8_t *BoxState::reserveRecord(std::size_t size)
{
    if (std::uint8_t *room = m_packer.reserve(size))
        return room;
    flush();
    return m_packer.reserve(size);
}

} // namespace tzsim
