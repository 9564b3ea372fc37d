// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/simulator/BoxTraffic.h"

#include "tools/simulator/Delivery.h"

#include <algorithm>

namespace tzsim {

void BoxTraffic::add(std::unique_ptr<TrafficSource> source)
{
    const std::lock_guard lock(m_mutex);
    m_sources.push_back(std::move(source));
}

void BoxTraffic::clear()
{
    const std::lock_guard lock(m_mutex);
    m_sources.clear();
}

bool BoxTraffic::empty() const
{
    const std::lock_guard lock(m_mutex);
    return m_sources.empty();
}

BoxTraffic::Clock::time_point BoxTraffic::run(Clock::time_point now, const BusSwitch &buses, Clock::time_point latest)
{
    const std::lock_guard lock(m_mutex);
    if (m_sources.empty())
        return latest;
    {
        Delivery delivery(buses);
        for (const auto &source : m_sources) {
            if (const auto due = source->nextDue(); due && *due <= now)
                source->run(now, delivery);
        }
    }
    std::erase_if(m_sources, [](const auto &source) { return !source->nextDue(); });
    for (const auto &source : m_sources)
        latest = std::min(latest, *source->nextDue());
    return latest;
}

} // namespace tzsim
