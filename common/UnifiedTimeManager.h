// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/TimestampDisplayMode.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>

namespace Common {

/// Converts device time, 64-bit in units of 0.1 microsecond, to common time and text.
///
/// Threads: every operation from any thread; nothing waits. A time stamp formatted while a device is registered anew
/// is taken wholly by the old base or wholly by the new one.
class UnifiedTimeManager
{
public:
    static constexpr double defaultScaleFactor = 1e6;
    static constexpr int maxDevices = 256; ///< device indexes fit a byte; others read as never registered

    UnifiedTimeManager();

    /// Sets the global reference time. A scale factor that is not above zero leaves the old one.
    void initialize(const std::chrono::system_clock::time_point &reference, double scaleFactor = defaultScaleFactor);

    /// Remembers the device time of the device's base, and forgets the device's previous time stamp of DeltaTime.
    /// @param baseTime       device time of the base, units of 0.1 microsecond
    /// @param offsetSeconds  the base's distance from the global reference; later devices pass the time since it
    void registerDevice(int deviceIndex, unsigned long long baseTime, double offsetSeconds = 0.0);

    /// Seconds since the global reference, negative before it. A device never registered has base and offset zero.
    double getGlobalRelativeSeconds(int deviceIndex, unsigned long long timestamp) const;

    /// Text of one time stamp without a unit; the decimals follow the scale factor. Spans are rounded, negative ones
    /// bear "-"; clock times are cut. In DeltaTime the first call for a device gives zero.
    std::string formatTimestamp(int deviceIndex, unsigned long long timestamp, TimestampDisplayMode mode);

    double getTimeScaleFactor() const { return m_scaleFactor.load(std::memory_order_relaxed); }
    /// Units per second of displayed time: 1 no decimals, 1e3 three, 1e6 six, 1e9 nine, another factor as many as its
    /// decimal logarithm needs, at most nine. A factor that is not above zero is ignored.
    void setTimeScaleFactor(double factor);

    /// Forgets the previous time stamps of DeltaTime.
    void resetDeltaTimeCalculator();

private:
    struct Base
    {
        std::uint64_t ticks = 0;
        double offsetSeconds = 0.0;
    };
    // Base and offset change together: an odd version is a write under way, a changed one a read to do again.
    struct Device
    {
        std::atomic<std::uint32_t> version{0};
        std::atomic<std::uint64_t> baseTicks{0};
        std::atomic<double> offsetSeconds{0.0};
        std::atomic<std::uint64_t> previous{noPrevious};
    };
    static constexpr std::uint64_t noPrevious = ~std::uint64_t{0};

    Base baseOf(int deviceIndex) const;
    std::int64_t globalTicks(int deviceIndex, std::uint64_t timestamp) const;
    std::int64_t deltaTicks(int deviceIndex, std::uint64_t timestamp);
    std::string clockText(std::int64_t ticks, bool withDate) const;

    std::mutex m_registerMutex; // one registerDevice() at a time; readers do not take it
    std::array<Device, maxDevices> m_devices;
    std::atomic<std::int64_t> m_referenceTicks{0}; // system clock, 0.1 microsecond since its epoch
    std::atomic<double> m_scaleFactor{defaultScaleFactor};
};

} // namespace Common
