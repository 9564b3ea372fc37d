// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tzbench_report {

/// How late each point of a one-millisecond grid was served. A point that was skipped counts with the time until the
/// next one was served, so that a stall shows in full whoever makes up for it or not.
class LatenessRecorder
{
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    static constexpr std::chrono::nanoseconds period = std::chrono::milliseconds(1);

    explicit LatenessRecorder(std::size_t expectedPoints) { m_lateness.reserve(expectedPoints + expectedPoints / 4); }

    /// Time of grid point 0; before the first serve().
    void setOrigin(TimePoint origin) { m_origin = origin; }
    TimePoint origin() const { return m_origin; }

    /// The latest grid point is served @p now; a further call for the same point does not count.
    void serve(TimePoint now)
    {
        const auto since = now - m_origin;
        for (const std::int64_t point = since / period; m_nextPoint <= point; ++m_nextPoint)
            m_lateness.push_back(static_cast<double>((since - m_nextPoint * period).count()) / 1000.0);
    }

    std::int64_t points() const { return m_nextPoint; }
    /// Lateness in microseconds that the given share of the points does not exceed. @p share from 0 to 1
    double percentile(double share) const { return percentileOf(m_lateness.begin(), m_lateness.end(), share); }
    /// Median lateness of the last tenth of the run less that of the first, in microseconds.
    double drift() const
    {
        const auto tenth = static_cast<std::ptrdiff_t>(m_lateness.size() / 10);
        return percentileOf(m_lateness.end() - tenth, m_lateness.end(), 0.5) -
               percentileOf(m_lateness.begin(), m_lateness.begin() + tenth, 0.5);
    }

private:
    using Iterator = std::vector<double>::const_iterator;

    static double percentileOf(Iterator begin, Iterator end, double share)
    {
        std::vector<double> values(begin, end);
        if (values.empty())
            return 0.0;
        const auto index = static_cast<std::ptrdiff_t>(share * static_cast<double>(values.size() - 1));
        std::nth_element(values.begin(), values.begin() + index, values.end());
        return values[static_cast<std::size_t>(index)];
    }

    TimePoint m_origin;
    std::int64_t m_nextPoint = 0;
    std::vector<double> m_lateness; // microseconds, one for each grid point
};

} // namespace tzbench_report
