// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <vector>

class TzVciDevice;
class TzVciDeviceStore;

/// The texts that tell how busy a device's link and its open CAN channels are.
struct TzVciBusLoadSummary
{
    struct Row
    {
        int channelIndex = 0; ///< counted from 0
        QString channel;      ///< "CAN1"
        QString messages;     ///< frames in the measuring period
        QString busLoad;      ///< "25.00%"
        QString periodTime;   ///< "1000.0 ms"
    };

    QString pcCounters; ///< of the link as this computer counts it: bytes and frames sent, bytes and records received
    QString deviceCounters; ///< as the device counts it: bytes and frames received, bytes sent
    std::vector<Row> rows;  ///< of the open CAN channels, ascending

    /// Reads the device, whose last report is decoded for this, on the thread that decodes, the user interface's.
    static TzVciBusLoadSummary of(TzVciDevice &device, const TzVciDeviceStore &store);
};
