// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

/// Tells the log how many datagrams the host dropped because a link's receive buffer was full: a warning at once, then
/// at most one a second with what came together since. One thread.
class TzVciDropReporter
{
public:
    using Clock = std::chrono::steady_clock;

    /// @param peer  the device's address, for the log line
    explicit TzVciDropReporter(std::string peer)
        : m_peer(std::move(peer))
    {
    }

    /// @param dropped  the socket's count so far, which wraps at 32 bits
    void update(std::uint32_t dropped, Clock::time_point now = Clock::now());
    /// Reports what is left, whenever the last warning was; for the end of a socket. The next socket counts from 0.
    void finish(std::uint32_t dropped);

private:
    void report(std::uint32_t dropped, Clock::time_point now);

    const std::string m_peer;
    std::uint32_t m_reported = 0;
    Clock::time_point m_nextReport{};
};
