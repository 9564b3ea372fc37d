// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/simulator/TrafficSource.h"

#include <memory>
#include <mutex>
#include <vector>

namespace tzsim {

class BusSwitch;

/// The traffic sources of one box. run() is for the box's thread, the rest for any.
class BoxTraffic
{
public:
    using Clock = TrafficSource::Clock;

    void add(std::unique_ptr<TrafficSource> source);
    void clear(); ///< when it returns no source delivers any more
    bool empty() const;
    /// Lets the sources that are due deliver and drops those at their end. Returns when the next is due, or @p latest.
    Clock::time_point run(Clock::time_point now, const BusSwitch &buses, Clock::time_point latest);

private:
    mutable std::mutex m_mutex; // held while the sources deliver, so that clear() ends them at once
    std::vector<std::unique_ptr<TrafficSource>> m_sources;
};

} // namespace tzsim
