// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/UnifiedTimeManager.h"

#include "common/platform/LocalTime.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace Common {

namespace {

constexpr std::int64_t ticksPerSecond = 10'000'000; // 0.1 microsecond
constexpr int tickDecimals = 7;
constexpr int maxDecimals = 9;

using TickDuration = std::chrono::duration<std::int64_t, std::ratio<1, ticksPerSecond>>;

std::int64_t powerOfTen(int exponent)
{
    std::int64_t power = 1;
    while (exponent-- > 0)
        power *= 10;
    return power;
}

// Differences beyond 29 000 years, which no honest device reports, stick at the end of the range.
std::int64_t difference(std::uint64_t later, std::uint64_t earlier)
{
    constexpr auto limit = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    if (later >= earlier)
        return static_cast<std::int64_t>(std::min(later - earlier, limit));
    return -static_cast<std::int64_t>(std::min(earlier - later, limit));
}

std::int64_t sum(std::int64_t a, std::int64_t b)
{
    std::int64_t result = 0;
    if (__builtin_add_overflow(a, b, &result))
        return a < 0 ? std::numeric_limits<std::int64_t>::min() : std::numeric_limits<std::int64_t>::max();
    return result;
}

std::int64_t toTicks(double seconds)
{
    constexpr double limit = 9.0e18; // below the range's end, so that the conversion is defined
    return std::llround(std::clamp(seconds * static_cast<double>(ticksPerSecond), -limit, limit));
}

int decimalsOf(double scaleFactor)
{
    constexpr double tolerance = 1e-9; // a power of ten may have a logarithm a hair above the whole number
    return std::clamp(static_cast<int>(std::ceil(std::log10(scaleFactor) - tolerance)), 0, maxDecimals);
}

// ".123456", or nothing without decimals; the ticks below one second are cut to the decimals.
std::string fractionText(std::uint64_t ticksBelowSecond, int decimals)
{
    if (decimals == 0)
        return {};
    const std::uint64_t nanoseconds = ticksBelowSecond * 100;
    const auto unit = static_cast<std::uint64_t>(powerOfTen(maxDecimals - decimals));
    return fmt::format(".{:0{}}", nanoseconds / unit, decimals);
}

// Seconds of a span, rounded to the decimals.
std::string spanText(std::int64_t ticks, int decimals)
{
    auto magnitude =
        ticks < 0 ? std::uint64_t{0} - static_cast<std::uint64_t>(ticks) : static_cast<std::uint64_t>(ticks);
    if (decimals < tickDecimals) {
        const auto unit = static_cast<std::uint64_t>(powerOfTen(tickDecimals - decimals));
        magnitude = (magnitude + unit / 2) / unit * unit;
    }
    const char *const sign = ticks < 0 && magnitude > 0 ? "-" : "";
    return fmt::format("{}{}{}", sign, magnitude / ticksPerSecond, fractionText(magnitude % ticksPerSecond, decimals));
}

} // namespace

UnifiedTimeManager::UnifiedTimeManager()
{
    initialize(std::chrono::system_clock::now());
}

void UnifiedTimeManager::initialize(const std::chrono::system_clock::time_point &reference, double scaleFactor)
{
    m_referenceTicks.store(std::chrono::floor<TickDuration>(reference.time_since_epoch()).count());
    setTimeScaleFactor(scaleFactor);
}

void UnifiedTimeManager::registerDevice(int deviceIndex, unsigned long long baseTime, double offsetSeconds)
{
    if (deviceIndex < 0 || deviceIndex >= maxDevices)
        return;
    Device &device = m_devices[static_cast<std::size_t>(deviceIndex)];
    const std::lock_guard lock(m_registerMutex);
    device.version.fetch_add(1);
    device.baseTicks.store(baseTime);
    device.offsetSeconds.store(std::isfinite(offsetSeconds) ? offsetSeconds : 0.0);
    device.version.fetch_add(1);
    device.previous.store(noPrevious);
}

UnifiedTimeManager::Base UnifiedTimeManager::baseOf(int deviceIndex) const
{
    if (deviceIndex < 0 || deviceIndex >= maxDevices)
        return {};
    const Device &device = m_devices[static_cast<std::size_t>(deviceIndex)];
    for (;;) {
        const std::uint32_t before = device.version.load();
        const Base base{device.baseTicks.load(), device.offsetSeconds.load()};
        if (before % 2 == 0 && device.version.load() == before)
            return base;
    }
}

double UnifiedTimeManager::getGlobalRelativeSeconds(int deviceIndex, unsigned long long timestamp) const
{
    const Base base = baseOf(deviceIndex);
    return static_cast<double>(difference(timestamp, base.ticks)) / static_cast<double>(ticksPerSecond) +
           base.offsetSeconds;
}

std::int64_t UnifiedTimeManager::globalTicks(int deviceIndex, std::uint64_t timestamp) const
{
    const Base base = baseOf(deviceIndex);
    return sum(difference(timestamp, base.ticks), toTicks(base.offsetSeconds));
}

std::int64_t UnifiedTimeManager::deltaTicks(int deviceIndex, std::uint64_t timestamp)
{
    if (deviceIndex < 0 || deviceIndex >= maxDevices)
        return 0;
    const std::uint64_t previous = m_devices[static_cast<std::size_t>(deviceIndex)].previous.exchange(timestamp);
    return previous == noPrevious ? 0 : difference(timestamp, previous);
}

std::string UnifiedTimeManager::formatTimestamp(int deviceIndex, unsigned long long timestamp,
                                                TimestampDisplayMode mode)
{
    const int decimals = decimalsOf(getTimeScaleFactor());
    switch (mode) {
    case TimestampDisplayMode::AbsoluteTime: return clockText(globalTicks(deviceIndex, timestamp), true);
    case TimestampDisplayMode::TimeOfDay: return clockText(globalTicks(deviceIndex, timestamp), false);
    case TimestampDisplayMode::RelativeTime:
        return spanText(difference(timestamp, baseOf(deviceIndex).ticks), decimals);
    case TimestampDisplayMode::DeltaTime: return spanText(deltaTicks(deviceIndex, timestamp), decimals);
    case TimestampDisplayMode::GlobalRelativeTime: break;
    }
    return spanText(globalTicks(deviceIndex, timestamp), decimals); // also for a number from outside the modes
}

std::string UnifiedTimeManager::clockText(std::int64_t ticks, bool withDate) const
{
    const TickDuration moment(sum(m_referenceTicks.load(), ticks));
    const auto second = std::chrono::floor<std::chrono::seconds>(moment);
    const std::string fraction =
        fractionText(static_cast<std::uint64_t>((moment - second).count()), decimalsOf(getTimeScaleFactor()));
    const std::tm time = platform::localTime(second.count());
    const std::string clock = fmt::format("{:02}:{:02}:{:02}{}", time.tm_hour, time.tm_min, time.tm_sec, fraction);
    if (!withDate)
        return clock;
    return fmt::format("{:04}-{:02}-{:02} {}", time.tm_year + 1900, time.tm_mon + 1, time.tm_mday, clock);
}

void UnifiedTimeManager::setTimeScaleFactor(double factor)
{
    if (std::isfinite(factor) && factor > 0.0)
        m_scaleFactor.store(factor, std::memory_order_relaxed);
}

void UnifiedTimeManager::resetDeltaTimeCalculator()
{
    for (Device &device : m_devices)
        device.previous.store(noPrevious);
}

} // namespace Common
