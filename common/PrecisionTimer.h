// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace Common {

/// Milliseconds of the steady clock, and sleeps on it. Any thread; keeps no state.
class PrecisionTimer
{
public:
    static PrecisionTimer &getInstance();
    PrecisionTimer(const PrecisionTimer &) = delete;
    PrecisionTimer &operator=(const PrecisionTimer &) = delete;

    /// Sleeps @p ms milliseconds, never less; 0 returns at once. Signals do not cut the sleep short.
    void waitFor(unsigned long long ms);
    /// Monotonic time in milliseconds, from an origin that is fixed while the machine runs.
    unsigned long long getTickCount() const;

private:
    PrecisionTimer() = default;
};

} // namespace Common
