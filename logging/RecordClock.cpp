// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/RecordClock.h"

#include "common/UnifiedTimeManager.h"

#include <algorithm>
#include <utility>

namespace Common {

namespace {

constexpr double microsecondsPerSecond = 1e6;
constexpr double longest = 9.2e18; // within 64 bits, so that the conversion is defined whatever a device reports

// Wraps where the distance of two hostile time stamps leaves 64 bits.
std::int64_t distance(std::int64_t later, std::int64_t earlier) noexcept
{
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(later) - static_cast<std::uint64_t>(earlier));
}

} // namespace

void RecordClock::restart() noexcept
{
    m_firstSeen = false;
    m_base = 0;
    m_last = 0;
}

std::int64_t RecordClock::next(int deviceIndex, std::uint64_t timestamp) noexcept
{
    const std::int64_t value = valueOf(deviceIndex, timestamp);
    if (!std::exchange(m_firstSeen, true)) {
        m_base = value;
        m_last = value;
    }
    const std::int64_t last = std::exchange(m_last, value);
    return distance(value, m_absoluteTime ? m_base : last);
}

std::int64_t RecordClock::valueOf(int deviceIndex, std::uint64_t timestamp) const noexcept
{
    if (!m_unifiedTime)
        return static_cast<std::int64_t>(timestamp);
    const double seconds = m_unifiedTime->getGlobalRelativeSeconds(deviceIndex, timestamp);
    return static_cast<std::int64_t>(std::clamp(seconds * microsecondsPerSecond + 0.5, -longest, longest));
}

} // namespace Common
