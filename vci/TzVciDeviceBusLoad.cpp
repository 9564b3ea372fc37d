// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciDeviceBusLoad.h"

#include "common/Log.h"
#include "vci/TzVciByteOrder.h"

#include <algorithm>
#include <cstddef>
#include <span>

namespace {

constexpr int defaultChannelCount = 2;
constexpr std::size_t periodBytes = 4;
constexpr std::size_t channelBytes = 8;
constexpr std::size_t deviceCounterBytes = 12; // at the end of the payload, whatever stands before

std::uint16_t reportLength(std::size_t fixedBytes, int channelCount)
{
    return static_cast<std::uint16_t>(fixedBytes + channelBytes * static_cast<std::size_t>(channelCount));
}

} // namespace

TzVciDeviceBusLoad::TzVciDeviceBusLoad(int channelCount, QObject *parent)
    : QObject(parent)
    , m_channelCount(channelCount > 0 ? std::min(channelCount, maxChannelCount) : defaultChannelCount)
    , m_minimumLength(reportLength(4, m_channelCount))
    , m_fullLength(reportLength(16, m_channelCount))
    , m_reportFrameBytes(reportLength(25, m_channelCount))
    , m_channels(static_cast<std::size_t>(m_channelCount))
{
}

void TzVciDeviceBusLoad::storeReport(const TzVciProtocolData &record) noexcept
{
    Report &report = m_report.next();
    if (record.length == 0 || record.length > report.bytes.size())
        return;
    const std::size_t held = record.payloadLength();
    std::copy_n(record.payload.begin(), held, report.bytes.begin());
    report.length = static_cast<std::uint16_t>(held);
    report.complete = held == record.length;
    m_report.publish();
}

void TzVciDeviceBusLoad::process()
{
    if (!m_report.take())
        return;
    const Report &report = m_report.value();
    if (report.length < m_minimumLength) {
        Common::logWarning(
            "Received busload data is too short. Expected at least {} bytes for {} channels, but got {}.",
            m_minimumLength, m_channelCount, report.length);
        if (report.complete)
            return;
        // The record cut the report, as it does every one of a device with that many channels: take what arrived.
    }
    const auto periodUs = TzVciByteOrder::load<std::uint32_t>(report.bytes.data());
    if (periodUs == 0)
        return;
    m_periodUs = periodUs;
    decodeChannels(report);
    if (report.complete && report.length >= m_fullLength)
        decodeDeviceCounters(report);
}

void TzVciDeviceBusLoad::decodeChannels(const Report &report)
{
    const std::uint8_t *bytes = report.bytes.data() + periodBytes;
    const std::size_t arrived = std::min(m_channels.size(), (report.length - periodBytes) / channelBytes);
    for (Channel &channel : std::span(m_channels).first(arrived)) {
        channel.frames = TzVciByteOrder::load<std::uint32_t>(bytes);
        channel.busyTime = TzVciByteOrder::load<std::uint32_t>(bytes + 4);
        channel.loadPercent = static_cast<double>(channel.busyTime) / static_cast<double>(m_periodUs) * 100.0;
        bytes += channelBytes;
    }
}

void TzVciDeviceBusLoad::decodeDeviceCounters(const Report &report)
{
    const std::uint8_t *bytes = report.bytes.data() + report.length - deviceCounterBytes;
    m_deviceRxFrames = TzVciByteOrder::load<std::uint32_t>(bytes);
    m_deviceRxBytes = TzVciByteOrder::load<std::uint32_t>(bytes + 4);
    // The device has not counted the report that carries the figure.
    m_deviceTxBytes = TzVciByteOrder::load<std::uint32_t>(bytes + 8) + m_reportFrameBytes;
}
