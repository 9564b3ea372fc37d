// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/simulator/SignalTable.h"
#include "tools/simulator/TrafficSource.h"
#include "tools/simulator/TrafficSpec.h"

#include <cstdint>
#include <vector>

namespace tzsim {

class BoxEngine;

/// Plays the messages of SignalTable on channels of one box, each by its cycle time.
class SignalSource : public TrafficSource
{
public:
    SignalSource(BoxEngine &box, const SignalSpec &spec, Clock::time_point start);
    std::optional<Clock::time_point> nextDue() const override;
    void run(Clock::time_point now, Delivery &delivery) override;

private:
    struct Slot
    {
        const SignalMessage *message = nullptr; ///< null for the error frame
        ChannelRef ref;
        Clock::time_point due;
        std::chrono::milliseconds cycle{0};
        std::uint64_t count = 0;
    };
    void addChannel(const ChannelRef &ref, const SignalSpec &spec);
    void deliver(const Slot &slot, Delivery &delivery);
    bool switchesRate(const ChannelRef &ref) const;

    BoxEngine &m_box;
    const Clock::time_point m_start;
    std::vector<Slot> m_slots; // a heap, the earliest in front
};

} // namespace tzsim
