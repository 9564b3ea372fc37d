// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace Common {

class UnifiedTimeManager;

/// The times of one recording: each record's distance from the file's first record, or from the record before.
///
/// Threads: one at a time.
class RecordClock
{
public:
    /// @param unifiedTime   converts device time; null leaves the device's units of 0.1 microsecond as they are
    /// @param absoluteTime  true: distance from the first record; false: from the record before
    RecordClock(const UnifiedTimeManager *unifiedTime, bool absoluteTime) noexcept
        : m_unifiedTime(unifiedTime)
        , m_absoluteTime(absoluteTime)
    {
    }

    /// The next record counts as the first of a file.
    void restart() noexcept;
    /// Microseconds to write for the next record, 0 for the first.
    /// @param timestamp  device time in units of 0.1 microsecond
    std::int64_t next(int deviceIndex, std::uint64_t timestamp) noexcept;

private:
    std::int64_t valueOf(int deviceIndex, std::uint64_t timestamp) const noexcept;

    const UnifiedTimeManager *m_unifiedTime;
    bool m_absoluteTime;
    bool m_firstSeen = false;
    std::int64_t m_base = 0;
    std::int64_t m_last = 0;
};

} // namespace Common
