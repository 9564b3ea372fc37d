// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciBusLoadSummary.h"

#include "vci/TzVciDevice.h"
#include "vci/TzVciDeviceBusLoad.h"
#include "vci/TzVciDeviceStore.h"
#include "vci/TzVciTypes.h"

#include <cstddef>

namespace {

constexpr double msPerUs = 0.001;

QString pcText(const TzVciCommunication &link)
{
    return QStringLiteral("%1 B, %2 / %3 B, %4")
        .arg(link.bytesSent())
        .arg(link.framesSent())
        .arg(link.bytesReceived())
        .arg(link.recordsReceived());
}

QString deviceText(const TzVciDeviceBusLoad &busLoad)
{
    return QStringLiteral("%1 B, %2 / %3 B")
        .arg(busLoad.deviceRxBytes())
        .arg(busLoad.deviceRxFrames())
        .arg(busLoad.deviceTxBytes());
}

TzVciBusLoadSummary::Row rowOf(int channelIndex, const TzVciDeviceBusLoad::Channel &channel, std::uint32_t periodUs)
{
    return {channelIndex, QStringLiteral("CAN%1").arg(channelIndex + 1), QString::number(channel.frames),
            QString::number(channel.loadPercent, 'f', 2) + QLatin1Char('%'),
            QString::number(periodUs * msPerUs, 'f', 1) + QStringLiteral(" ms")};
}

} // namespace

TzVciBusLoadSummary TzVciBusLoadSummary::of(TzVciDevice &device, const TzVciDeviceStore &store)
{
    TzVciDeviceBusLoad &busLoad = *device.busLoad();
    if (busLoad.hasNewData())
        busLoad.process();
    TzVciBusLoadSummary summary{pcText(*device.communication()), deviceText(busLoad), {}};
    const int deviceIndex = device.deviceIndex();
    for (int channel = 0; channel < busLoad.channelCount(); ++channel) {
        if (store.isChannelOpen(deviceIndex, TzVciProtocolId::can, channel)) {
            summary.rows.push_back(
                rowOf(channel, busLoad.channels()[static_cast<std::size_t>(channel)], busLoad.periodUs()));
        }
    }
    return summary;
}
