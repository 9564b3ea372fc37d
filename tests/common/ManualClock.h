// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/HeartbeatClock.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>

namespace tztest {

/// A clock that stands until a test moves it.
class ManualClock : public Common::HeartbeatClock
{
public:
    Clock::time_point now() const noexcept override
    {
        const std::lock_guard lock(m_mutex);
        return m_now;
    }
    Ticket ticket() const noexcept override
    {
        const std::lock_guard lock(m_mutex);
        return m_wakeUps;
    }
    bool sleepUntil(Ticket ticket, Clock::time_point deadline) noexcept override
    {
        std::unique_lock lock(m_mutex);
        m_deadline = deadline;
        m_changed.notify_all();
        m_changed.wait(lock, [&] { return m_wakeUps != ticket || m_now >= deadline; });
        m_deadline.reset();
        return m_wakeUps == ticket;
    }
    void wake() noexcept override
    {
        const std::lock_guard lock(m_mutex);
        ++m_wakeUps;
        m_changed.notify_all();
    }

    /// Moves the time alone; whoever sleeps to an earlier time wakes up.
    void move(Clock::duration step)
    {
        const std::lock_guard lock(m_mutex);
        m_now += step;
        m_changed.notify_all();
    }
    /// Moves the time and waits until the thread sleeps again, to a time to come: all that was due then is done.
    /// @return false if the thread does not get there, which is for a broken program only
    [[nodiscard]] bool advance(Clock::duration step)
    {
        if (!waitForSleep())
            return false;
        move(step);
        return waitForSleep();
    }
    /// How long ago the clock was made, in its own time.
    std::chrono::milliseconds elapsed() const
    {
        return std::chrono::duration_cast<std::chrono::milliseconds>(now() - start);
    }

private:
    static constexpr Clock::time_point start{std::chrono::hours(1)};

    bool waitForSleep()
    {
        std::unique_lock lock(m_mutex);
        // By the system clock: the thread sanitizer knows no other limited wait.
        return m_changed.wait_until(lock, std::chrono::system_clock::now() + std::chrono::seconds(20),
                                    [&] { return m_deadline && *m_deadline > m_now; });
    }

    mutable std::mutex m_mutex; // protects all that follows
    std::condition_variable m_changed;
    Clock::time_point m_now = start;
    Ticket m_wakeUps = 0;
    std::optional<Clock::time_point> m_deadline; // while the thread sleeps
};

} // namespace tztest
