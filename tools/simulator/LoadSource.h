// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/simulator/BusFrame.h"
#include "tools/simulator/TrafficSource.h"
#include "tools/simulator/TrafficSpec.h"

#include <cstdint>
#include <vector>

namespace tzsim {

/// An even stream of frames on several channels; LoadSpec tells the rest. Frame k is due at start + k periods, and
/// carries that time. Above 2000 frames/s the frames of half a millisecond go out together. A source that is more than
/// a second late leaves the missed frames out.
class LoadSource : public TrafficSource
{
public:
    LoadSource(int box, const LoadSpec &spec, Clock::time_point start);
    std::optional<Clock::time_point> nextDue() const override;
    void run(Clock::time_point now, Delivery &delivery) override;

private:
    struct Channel
    {
        ChannelRef ref;
        std::uint64_t sent = 0;
    };
    Clock::time_point dueOf(std::uint64_t round) const;
    void deliver(Channel &channel, Clock::time_point at, Delivery &delivery);
    bool finished() const;

    const LoadSpec m_spec;
    const double m_periodNs;
    const std::uint64_t m_roundsAtOnce;
    Clock::time_point m_start;
    std::uint64_t m_round = 0; // the next
    std::vector<Channel> m_channels;
    CanFrame m_canFrame; // made once; identifier and number change
    LinFrame m_linFrame;
};

} // namespace tzsim
