// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <map>

#include "tools/simulator/BusFrame.h"

namespace tzsim {

/// A CAN channel as the host has set it.
struct CanChannelState
{
    bool open = false;
    std::uint32_t nominalRate = 0;        ///< bit/s, from the open request and parameter 1
    std::uint32_t dataRate = 0;           ///< bit/s, parameter 38; 0 on a channel opened without CAN FD
    std::array<std::uint8_t, 4> timing{}; ///< parameters 39 to 42: nominal segment 1, 2, data segment 1, 2
    bool applied = false;                 ///< an apply request came after the last parameter
    bool resistor = false;                ///< survives a close, as a relay would
    bool operator==(const CanChannelState &) const = default;
};

/// A LIN channel as the host has set it.
struct LinChannelState
{
    bool open = false;
    bool master = false;
    std::uint32_t rate = 0;                       ///< bit/s
    std::map<std::uint8_t, LinFrame> responses{}; ///< stored by the host, by identifier; forgotten at close
    bool operator==(const LinChannelState &) const = default;
};

/// What one channel has carried since the box was started.
struct ChannelCounters
{
    std::uint64_t framesSent = 0;     ///< records sent to the host: echoes, received and error frames
    std::uint64_t framesReceived = 0; ///< transmit requests that the host sent and the channel took
    std::uint64_t framesRejected = 0; ///< transmit requests that the channel could not take (closed, bad content)
    bool operator==(const ChannelCounters &) const = default;
};

/// What one box has seen since it was started.
struct BoxCounters
{
    std::uint64_t datagramsIn = 0;
    std::uint64_t datagramsOut = 0;
    std::uint64_t bytesIn = 0;
    std::uint64_t bytesOut = 0;
    std::uint64_t framesIn = 0; ///< protocol frames of all kinds, without heartbeats
    std::uint64_t heartbeats = 0;
    std::uint64_t malformed = 0; ///< datagrams with anything in them that a host must not send
    std::uint64_t discoveryReplies = 0;
    std::uint64_t busLoadReports = 0;
    std::uint64_t sendErrors = 0;      ///< datagrams that the socket refused
    std::uint64_t heartbeatLosses = 0; ///< times that the box closed its channels because the host was silent
    std::chrono::steady_clock::time_point lastHeartbeat{}; ///< the epoch before the first
};

} // namespace tzsim
