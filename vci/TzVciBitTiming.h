// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

/// Bit timing of one CAN phase, nominal or data: how the device divides its clock for a bit rate. A value, any thread.
///
/// A bit lasts 1 + seg1 + seg2 time quanta and is sampled after 1 + seg1 of them.
struct TzVciBitTiming
{
    static constexpr std::uint32_t clockMhz = 80; ///< of every device, for all bit timing
    static constexpr double clockHz = clockMhz * 1e6;

    /// How well a sample point suits a vehicle bus.
    enum class SamplePointRating
    {
        Good,
        Acceptable,
        Poor
    };

    int seg1 = 0;              ///< time quanta between the synchronisation and the sample point
    int seg2 = 0;              ///< time quanta after the sample point
    std::uint32_t bitRate = 0; ///< in bit/s

    double samplePointPercent() const noexcept;
    /// Good from 75 to 87.5, Poor below 70 and above 90, Acceptable between.
    SamplePointRating samplePointRating() const noexcept;

    /// The number by which the clock is to be divided for one time quantum; infinite without a bit rate.
    double divider() const noexcept;
    /// Whether the divider is an integer within a hundredth: that admits rates such as 33333 bit/s, whose divider of
    /// 60.0006 the device sets as 60.
    bool isDividerValid() const noexcept;
};

/// Time segments that a new or reset channel has: a sample point of 80 per cent at 500 kbit/s and 2 Mbit/s.
namespace TzVciBitTimingDefault {
inline constexpr int nominalSeg1 = 31;
inline constexpr int nominalSeg2 = 8;
inline constexpr int dataSeg1 = 15;
inline constexpr int dataSeg2 = 4;
} // namespace TzVciBitTimingDefault
