// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/soak/GapWatch.h"

#include "common/Thread.h"

#include <algorithm>

namespace tzsoak {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds tickPeriod{10};
constexpr milliseconds notedGap{150};
constexpr milliseconds notedStall{8};      // a drain that is as late finds more than one batch
constexpr std::size_t mostNoted = 100'000; // of either kind: the watch must not grow with the run

void note(std::vector<GapWatch::Gap> &gaps, GapWatch::Gap gap, milliseconds least)
{
    if (gap.length() >= least && gaps.size() < mostNoted)
        gaps.push_back(gap);
}

} // namespace

GapWatch::GapWatch()
    : m_last(Clock::now())
    , m_thread([this](const std::stop_token &stop) { watchMachine(stop); })
{
    m_gaps.reserve(1024);
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.setInterval(tickPeriod);
    connect(&m_timer, &QTimer::timeout, this, &GapWatch::tick);
    m_timer.start();
}

void GapWatch::tick()
{
    const Clock::time_point now = Clock::now();
    note(m_gaps, {m_last, now}, notedGap);
    m_last = now;
}

void GapWatch::watchMachine(const std::stop_token &stop)
{
    Common::setThreadName("soak-stalls");
    while (!stop.stop_requested()) {
        const Clock::time_point due = Clock::now() + tickPeriod;
        std::this_thread::sleep_until(due);
        const std::lock_guard lock(m_mutex);
        note(m_stalls, {due, Clock::now()}, notedStall);
    }
}

std::vector<GapWatch::Gap> GapWatch::machineStalls() const
{
    const std::lock_guard lock(m_mutex);
    return m_stalls;
}

milliseconds GapWatch::stalled(Clock::time_point from, Clock::time_point to) const
{
    const std::lock_guard lock(m_mutex);
    milliseconds sum{0};
    for (const Gap &stall : m_stalls) {
        const Gap common{std::max(stall.from, from), std::min(stall.to, to)};
        if (common.from < common.to)
            sum += common.length();
    }
    return sum;
}

} // namespace tzsoak
