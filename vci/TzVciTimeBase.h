// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/UnifiedTimeManager.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>

/// Puts the clocks of several devices on one axis. The reference is the moment at which the first device told its time;
/// a later device is placed by the steady time that has passed since. Nothing is smoothed and no drift corrected.
///
/// Threads: any.
class TzVciTimeBase
{
public:
    using Clock = std::chrono::steady_clock;

    /// @param manager  outlives the object
    explicit TzVciTimeBase(Common::UnifiedTimeManager &manager);

    /// A device has told its time just now. The first call sets the reference.
    /// @param baseTime  device time in 0.1 microsecond
    void registerDevice(int deviceIndex, std::uint64_t baseTime);
    /// Makes the present moment the reference; every device known keeps its place in time until it is registered anew.
    void reset();

private:
    struct Base
    {
        std::uint64_t deviceTime;
        Clock::time_point moment; // when the device told it
    };

    void setReference(Clock::time_point moment);
    void place(int deviceIndex, const Base &base);

    Common::UnifiedTimeManager &m_manager;
    std::mutex m_mutex; // protects all below
    std::optional<Clock::time_point> m_reference;
    std::map<int, Base> m_bases;
};
