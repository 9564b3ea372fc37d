// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/PrecisionTimer.h"

#include "common/platform/SteadySleeper.h"

#include <algorithm>
#include <chrono>

namespace Common {

using platform::SteadySleeper;

PrecisionTimer &PrecisionTimer::getInstance()
{
    static PrecisionTimer timer;
    return timer;
}

void PrecisionTimer::waitFor(unsigned long long ms)
{
    if (ms == 0)
        return;
    const auto start = SteadySleeper::Clock::now();
    // A wait beyond the clock's range is as good as one that never ends; the clamp keeps the sum from overflowing.
    constexpr auto longest = std::chrono::milliseconds(std::chrono::years(100));
    const auto duration = std::chrono::milliseconds(std::min<unsigned long long>(ms, longest.count()));
    SteadySleeper sleeper;
    (void)sleeper.sleepUntil(sleeper.ticket(), start + duration);
}

unsigned long long PrecisionTimer::getTickCount() const
{
    const auto sinceEpoch = SteadySleeper::Clock::now().time_since_epoch();
    return static_cast<unsigned long long>(std::chrono::duration_cast<std::chrono::milliseconds>(sinceEpoch).count());
}

} // namespace Common
