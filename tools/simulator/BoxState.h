// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/simulator/BoxLink.h"
#include "tools/simulator/BoxProtocol.h"
#include "tools/simulator/BusLoadMeter.h"
#include "tools/simulator/DatagramPacker.h"
#include "tools/simulator/DeviceClock.h"

#include <chrono>
#include <cstdint>
#include <span>
#include <vector>

namespace tzsim {

/// All that a box knows, and how it talks to its host. Not thread-safe: protected as a whole by its engine's mutex.
class BoxState
{
public:
    using Clock = std::chrono::steady_clock;

    explicit BoxState(const BoxConfig &config);
    /// Channels closed, logs and counters empty, the clock at its offset. Faults and periods stay.
    void powerUp(const BoxConfig &config, Clock::time_point now);

    /// The clock reads @p ticks at @p now.
    void setClock(std::uint64_t ticks, Clock::time_point now);

    int openChannels() const;
    bool anyCanOpen() const;
    ChannelCounters *channelCounters(Family family, int channel); ///< null when there is no such channel
    BoxCounters allCounters() const;

    /// The host of a datagram with frames; another than before starts new totals for the bus load reports.
    void noteHost(const sockaddr_in &from, std::size_t datagramBytes);
    /// Puts a record for the host behind those that wait, unless the channel is closed or there is no host.
    void deliverCan(std::size_t channel, const CanFrame &frame, std::uint8_t type, Clock::time_point at);
    void deliverLin(std::size_t channel, const LinFrame &frame, std::uint8_t direction, Clock::time_point at);
    /// Sends the records that wait.
    void flush();
    /// Sends a datagram of its own, after the records that wait. False when silent, or nothing could be sent.
    bool sendTo(const sockaddr_in &to, std::span<const std::uint8_t> bytes);
    bool sendToHost(std::span<const std::uint8_t> bytes) { return link.host() && sendTo(*link.host(), bytes); }

    BoxProtocol protocol;
    BoxLink link;
    DeviceClock clock;
    BusLoadMeter meter;
    BusLoadMeter::HostTotals hostTotals;
    BoxCounters counters; ///< without what the link counts
    std::vector<ChannelCounters> canCounters;
    std::vector<ChannelCounters> linCounters;
    std::vector<std::uint64_t> canLastTicks; ///< the stamps of a channel never go backwards
    std::vector<std::uint64_t> linLastTicks;
    bool silent = false;
    std::chrono::milliseconds busLoadPeriod;
    std::chrono::milliseconds heartbeatTimeout;
    Clock::time_point reportDue{};
    Clock::time_point hostHeardAt{};

private:
    std::uint8_t *reserveRecord(std::size_t size);
    std::uint64_t stamp(std::uint64_t &last, Clock::time_point at) const;

    DatagramPacker m_packer; // records not sent yet
};

} // namespace tzsim
