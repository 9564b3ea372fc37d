// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace tzsim {

/// The clock of a box: monotonic, 64 bits, in units of 0.1 microsecond. Not thread-safe.
class DeviceClock
{
public:
    using Clock = std::chrono::steady_clock;
    using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;

    /// The clock reads @p ticks at @p now and runs on from there.
    void set(std::uint64_t ticks, Clock::time_point now)
    {
        m_start = now;
        m_offset = ticks;
    }
    /// A time before the last set() reads as the value set.
    std::uint64_t at(Clock::time_point time) const
    {
        const auto elapsed = std::max(time - m_start, Clock::duration::zero());
        return m_offset + static_cast<std::uint64_t>(std::chrono::duration_cast<Ticks>(elapsed).count());
    }

private:
    Clock::time_point m_start = Clock::now();
    std::uint64_t m_offset = 0;
};

} // namespace tzsim
