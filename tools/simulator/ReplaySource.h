// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/simulator/BoxConfig.h"
#include "tools/simulator/ReplayLog.h"
#include "tools/simulator/TrafficSource.h"
#include "tools/simulator/TrafficSpec.h"

#include <vector>

namespace tzsim {

/// Plays a recorded log. It begins when the first of its channels has a listener, so that nothing is played to nobody.
class ReplaySource : public TrafficSource
{
public:
    ReplaySource(const BoxConfig &box, const ReplaySpec &spec, ReplayLog log, Clock::time_point start);
    std::optional<Clock::time_point> nextDue() const override;
    void run(Clock::time_point now, Delivery &delivery) override;

private:
    bool waitForListener(Clock::time_point now, const Delivery &delivery);
    Clock::time_point dueOf(std::size_t entry) const;

    const ReplaySpec m_spec;
    const int m_box;
    std::vector<ReplayLog::Entry> m_entries; // of channels that the box has, with its channel numbers
    std::vector<ChannelRef> m_channels;      // those that occur
    bool m_started = false;
    Clock::time_point m_start; // of the present round; while waiting, the time of the next look
    std::size_t m_next = 0;
};

} // namespace tzsim
