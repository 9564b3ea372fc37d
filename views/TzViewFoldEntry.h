// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciMessage.h"

#include <cstdint>
#include <limits>

/// What a folded view knows of one distinct frame.
struct TzViewFoldEntry
{
    static constexpr std::uint64_t noRow = std::numeric_limits<std::uint64_t>::max();

    TzVciMessage message;      ///< the newest frame of the key
    std::uint32_t count = 1;   ///< frames folded so far
    std::uint64_t row = noRow; ///< index of the table row that shows it
    double cycleMs = 0.0;      ///< smoothed interval in milliseconds; 0 before the second frame

    /// Takes in the next frame of the same key. Time stamps are unsigned: one that runs backwards wraps.
    void fold(const TzVciMessage &next) noexcept
    {
        constexpr double ticksPerMs = 10'000.0; // device time counts 0.1 microsecond
        constexpr double weightOfPast = 0.7;
        constexpr double weightOfNext = 0.3; // by itself: 1.0 - 0.7 is another double
        const double intervalMs = static_cast<double>(next.timestamp - message.timestamp) / ticksPerMs;
        cycleMs = cycleMs != 0.0 ? cycleMs * weightOfPast + intervalMs * weightOfNext : intervalMs;
        message = next;
        ++count;
    }
};
