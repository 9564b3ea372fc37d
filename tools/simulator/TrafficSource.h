// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <optional>

namespace tzsim {

class Delivery;

/// Something that puts frames on the buses of a box by the clock. Runs on the box's thread alone.
class TrafficSource
{
public:
    using Clock = std::chrono::steady_clock;

    TrafficSource() = default;
    TrafficSource(const TrafficSource &) = delete;
    TrafficSource &operator=(const TrafficSource &) = delete;
    virtual ~TrafficSource() = default;
    /// When it wants to run next; nothing once it has come to its end.
    virtual std::optional<Clock::time_point> nextDue() const = 0;
    /// Delivers what is due, but no more than a few thousand frames: requests are answered in between.
    virtual void run(Clock::time_point now, Delivery &delivery) = 0;
};

} // namespace tzsim
