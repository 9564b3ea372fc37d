// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

namespace Common::platform {

/// Sleep to an absolute time of the steady clock, which another thread can end early.
///
/// The sleeping thread takes a ticket, then looks at what it has to do, then sleeps with the ticket: a wake() in
/// between is not lost, the sleep returns at once.
///
/// Threads: one thread sleeps; any thread, also a signal handler, may call wake().
class SteadySleeper
{
public:
    using Clock = std::chrono::steady_clock;
    using Ticket = std::uint32_t;

    /// A deadline that never comes: only wake() ends the sleep.
    static constexpr Clock::time_point never = Clock::time_point::max();

    Ticket ticket() const noexcept { return m_wakeUps.load(std::memory_order_acquire); }
    /// Sleeps until @p deadline, never less, unless wake() was called since @p ticket was taken.
    /// @return true at the deadline, false when woken
    bool sleepUntil(Ticket ticket, Clock::time_point deadline) noexcept;
    void wake() noexcept;

private:
    std::atomic<std::uint32_t> m_wakeUps{0}; // the word that the kernel waits on
};

} // namespace Common::platform
