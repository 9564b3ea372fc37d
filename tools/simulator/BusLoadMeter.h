// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/simulator/BusFrame.h"

#include <chrono>
#include <cstdint>
#include <vector>

namespace tzsim {

/// Counts the frames that pass the CAN channels of a box and the time that they keep the bus busy, and forms the
/// payload of a bus load report. Lengths are those of ISO 11898-1 with the fixed stuff bits of CAN FD, but without the
/// stuff bits that depend on the data. Not thread-safe.
class BusLoadMeter
{
public:
    using Clock = std::chrono::steady_clock;

    /// What the box has exchanged with its host since that host appeared.
    struct HostTotals
    {
        std::uint32_t rxFrames = 0;
        std::uint32_t rxBytes = 0;
        std::uint32_t txBytes = 0; ///< without the report that carries it
    };

    explicit BusLoadMeter(std::size_t channels)
        : m_channels(channels)
    {
    }
    /// The rates that the next frames of the channel run at, in bit/s.
    void setRates(std::size_t channel, std::uint32_t nominal, std::uint32_t data);
    void addFrame(std::size_t channel, const CanFrame &frame);
    /// Starts a new period.
    void restart(Clock::time_point now);
    /// The payload of the report for the period that ends @p now; starts the next one.
    std::vector<std::uint8_t> takeReport(Clock::time_point now, const HostTotals &totals);

    /// Bits of a frame that run at the nominal and at the data rate.
    struct FrameBits
    {
        std::uint32_t nominal = 0;
        std::uint32_t data = 0;
        bool operator==(const FrameBits &) const = default;
    };
    static FrameBits frameBits(const CanFrame &frame);

private:
    struct Channel
    {
        std::uint32_t frames = 0;
        std::uint64_t nominalBits = 0;
        std::uint64_t dataBits = 0;
        std::uint32_t nominalRate = 500'000;
        std::uint32_t dataRate = 2'000'000;
        double busyUs = 0; // of the bits that ran at earlier rates
        double busyTimeUs() const;
    };
    std::vector<Channel> m_channels;
    Clock::time_point m_periodStart{};
};

} // namespace tzsim
