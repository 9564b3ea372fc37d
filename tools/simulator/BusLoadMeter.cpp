// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/simulator/BusLoadMeter.h"

#include "tools/simulator/Wire.h"

#include <cmath>

namespace tzsim {

BusLoadMeter::FrameBits BusLoadMeter::frameBits(const CanFrame &frame)
{
    const bool extended = (frame.flags & CanFlag::extended) != 0;
    const std::uint32_t bytes = (frame.flags & CanFlag::remote) != 0 ? 0 : frame.length;
    if ((frame.flags & CanFlag::fd) == 0) {
        // Start, identifier, control, CRC, acknowledge, end and the three bits of space behind.
        const std::uint32_t fixed = extended ? 67 : 47;
        return {fixed + 8 * bytes, 0};
    }
    const std::uint32_t arbitration = extended ? 36 : 17;           // up to and with BRS
    constexpr std::uint32_t tail = 13;                              // CRC delimiter, acknowledge, end, space
    constexpr std::uint32_t control = 5;                            // ESI and DLC
    const std::uint32_t crc = bytes > 16 ? 4 + 21 + 7 : 4 + 17 + 6; // stuff count, CRC, fixed stuff bits
    const std::uint32_t payload = control + 8 * bytes + crc;
    if ((frame.flags & CanFlag::bitRateSwitch) == 0)
        return {arbitration + payload + tail, 0};
    return {arbitration + tail, payload};
}

double BusLoadMeter::Channel::busyTimeUs() const
{
    return busyUs + 1e6 * static_cast<double>(nominalBits) / nominalRate +
           1e6 * static_cast<double>(dataBits) / dataRate;
}

void BusLoadMeter::setRates(std::size_t channel, std::uint32_t nominal, std::uint32_t data)
{
    Channel &c = m_channels[channel];
    c.busyUs = c.busyTimeUs();
    c.nominalBits = 0;
    c.dataBits = 0;
    c.nominalRate = std::max<std::uint32_t>(nominal, 1);
    c.dataRate = data == 0 ? c.nominalRate : data; // a channel without CAN FD switches nothing
}

void BusLoadMeter::addFrame(std::size_t channel, const CanFrame &frame)
{
    Channel &c = m_channels[channel];
    const FrameBits bits = frameBits(frame);
    ++c.frames;
    c.nominalBits += bits.nominal;
    c.dataBits += bits.data;
}

void BusLoadMeter::restart(Clock::time_point now)
{
    m_periodStart = now;
    for (Channel &c : m_channels) {
        c.frames = 0;
        c.nominalBits = 0;
        c.dataBits = 0;
        c.busyUs = 0;
    }
}

std::vector<std::uint8_t> BusLoadMeter::takeReport(Clock::time_point now, const HostTotals &totals)
{
    const auto period = std::chrono::duration_cast<std::chrono::microseconds>(now - m_periodStart).count();
    std::vector<std::uint8_t> payload(16 + 8 * m_channels.size());
    std::uint8_t *out = payload.data();
    const auto put = [&out](std::uint32_t value) {
        wire::writeU32(out, value);
        out += 4;
    };
    put(static_cast<std::uint32_t>(period));
    for (const Channel &c : m_channels) {
        put(c.frames);
        put(static_cast<std::uint32_t>(std::lround(c.busyTimeUs())));
    }
    put(totals.rxFrames);
    put(totals.rxBytes);
    put(totals.txBytes);
    restart(now);
    return payload;
}

} // namespace tzsim
