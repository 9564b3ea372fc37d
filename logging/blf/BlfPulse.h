// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <functional>
#include <utility>

namespace BLF {

/// Calls a function from within a long run, at most every 50 ms, so that a window can go on painting. Free where there
/// is no function.
class BlfPulse
{
public:
    static constexpr std::chrono::milliseconds interval{50};
    /// After so many small steps it is worth to look at the clock.
    static constexpr std::size_t stepsBetweenBeats = 1024;

    explicit BlfPulse(std::function<void()> call)
        : m_call(std::move(call))
        , m_next(Clock::now() + interval)
    {
    }

    /// Calls where the interval has passed since the last call.
    void beat()
    {
        if (!m_call || Clock::now() < m_next)
            return;
        m_call();
        m_next = Clock::now() + interval; // what the function itself took is not the run's time
    }
    /// To be called for each of many small steps.
    void step()
    {
        if (++m_steps % stepsBetweenBeats == 0)
            beat();
    }

private:
    using Clock = std::chrono::steady_clock;

    std::function<void()> m_call;
    Clock::time_point m_next;
    std::size_t m_steps = 0;
};

} // namespace BLF
