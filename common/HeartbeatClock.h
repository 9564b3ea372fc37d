// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/platform/SteadySleeper.h"

namespace Common {

/// The time that a HeartbeatManager lives by: the steady clock, and the sleep of its thread. A test hands in a clock of
/// its own and lets hours pass at once.
///
/// Threads: one thread sleeps; any thread may call the other functions.
class HeartbeatClock
{
public:
    using Clock = platform::SteadySleeper::Clock;
    using Ticket = platform::SteadySleeper::Ticket;

    HeartbeatClock() = default;
    virtual ~HeartbeatClock() = default;
    HeartbeatClock(const HeartbeatClock &) = delete;
    HeartbeatClock &operator=(const HeartbeatClock &) = delete;

    virtual Clock::time_point now() const noexcept { return Clock::now(); }
    /// As those of platform::SteadySleeper.
    virtual Ticket ticket() const noexcept { return m_sleeper.ticket(); }
    virtual bool sleepUntil(Ticket ticket, Clock::time_point deadline) noexcept
    {
        return m_sleeper.sleepUntil(ticket, deadline);
    }
    virtual void wake() noexcept { m_sleeper.wake(); }

private:
    platform::SteadySleeper m_sleeper;
};

} // namespace Common
