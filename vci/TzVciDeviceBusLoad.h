// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciLatestValue.h"
#include "vci/TzVciProtocolData.h"

#include <QObject>

#include <array>
#include <cstdint>
#include <vector>

/// Keeps the last bus load report of one device and decodes it on demand.
///
/// Threads: the link's receive thread calls storeReport(), which never waits; everything else runs on the UI thread.
/// A report that arrives while another is decoded is kept for the next process().
/// Errors: a report that is too short is a log line and changes nothing. Of one that came whole over the wire but did
/// not fit the record, the channels that arrived are decoded all the same and the others stay as they are.
class TzVciDeviceBusLoad : public QObject
{
    Q_OBJECT
public:
    struct Channel
    {
        std::uint32_t frames = 0;   ///< in the measuring period
        std::uint32_t busyTime = 0; ///< bus busy time in the measuring period, in the unit of periodUs
        double loadPercent = 0.0;   ///< from 0.0; above 100.0 if the device tells more than its period
    };

    /// @param channelCount  CAN channels of the device; 0 or below counts as 2
    explicit TzVciDeviceBusLoad(int channelCount, QObject *parent = nullptr);

    /// Keeps the payload of a report; a record whose length is 0 or above 512 is left out.
    void storeReport(const TzVciProtocolData &record) noexcept;
    /// Any thread: whether process() has something to do.
    bool hasNewData() const noexcept { return m_report.isFresh(); }
    /// Decodes the last report if it is new.
    void process();

    int channelCount() const { return m_channelCount; }
    std::uint16_t minimumLength() const { return m_minimumLength; }          ///< payload bytes for all channels
    std::uint16_t fullLength() const { return m_fullLength; }                ///< with the counters of the device
    std::uint16_t reportFrameBytes() const { return m_reportFrameBytes; }    ///< of the report itself on the wire
    std::uint16_t receivedLength() const { return m_report.value().length; } ///< of the report decoded last
    std::uint32_t periodUs() const { return m_periodUs; }               ///< measuring period, 0 before the first report
    const std::vector<Channel> &channels() const { return m_channels; } ///< always channelCount() entries
    std::uint32_t deviceRxFrames() const { return m_deviceRxFrames; }
    std::uint32_t deviceRxBytes() const { return m_deviceRxBytes; }
    std::uint32_t deviceTxBytes() const { return m_deviceTxBytes; }

private:
    static constexpr int maxChannelCount = 255; // device records count channels in a byte

    struct Report
    {
        std::uint16_t length = 0; // bytes held
        bool complete = true;     // false: the wire named more than a record holds, so the end is missing
        std::array<std::uint8_t, 512> bytes{};
    };

    void decodeChannels(const Report &report);
    void decodeDeviceCounters(const Report &report);

    const int m_channelCount;
    const std::uint16_t m_minimumLength;
    const std::uint16_t m_fullLength;
    const std::uint16_t m_reportFrameBytes;
    TzVciLatestValue<Report> m_report;
    std::uint32_t m_periodUs = 0;
    std::vector<Channel> m_channels;
    std::uint32_t m_deviceRxFrames = 0;
    std::uint32_t m_deviceRxBytes = 0;
    std::uint32_t m_deviceTxBytes = 0;
};
