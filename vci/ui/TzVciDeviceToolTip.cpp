// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/ui/TzVciDeviceToolTip.h"

#include "vci/TzVciDeviceStore.h"
#include "vci/TzVciTypes.h"

#include <QCoreApplication>
#include <QStringList>

namespace {

QString translated(const char *text)
{
    return QCoreApplication::translate("TzVciDeviceToolTip", text);
}

QString marked(const QString &text, bool open)
{
    return QStringLiteral("<span class=\"%1\">%2</span>")
        .arg(open ? QStringLiteral("opened") : QStringLiteral("closed"), text);
}

QString row(const QString &name, const QString &value)
{
    return QStringLiteral("<tr><td class=\"name\">%1</td><td>%2</td></tr>").arg(name, value);
}

QString channelList(const TzVciDeviceStore &store, int deviceIndex, std::uint8_t protocol, const QString &family)
{
    QStringList entries;
    for (const std::uint32_t channel : store.channelIndices(deviceIndex, protocol, -1)) {
        const int channelIndex = static_cast<int>(channel);
        entries << marked(QStringLiteral("%1%2").arg(family).arg(channelIndex + 1),
                          store.isChannelOpen(deviceIndex, protocol, channelIndex));
    }
    return entries.isEmpty() ? QStringLiteral("-") : entries.join(QLatin1Char(' '));
}

} // namespace

QString tzVciDeviceToolTip(const TzVciDeviceStore &store, int deviceIndex)
{
    const bool open = store.isDeviceOpen(deviceIndex);
    return QStringLiteral("<html><head><style>"
                          ".title { font-weight: bold; }"
                          ".name { padding-right: 8px; color: #5c6770; }"
                          ".opened { color: #1f78d1; font-weight: bold; }"
                          ".closed { color: #8a949e; }"
                          "</style></head><body><table cellspacing=\"2\">"
                          "<tr><td class=\"title\" colspan=\"2\">%1%2</td></tr>%3%4%5</table></body></html>")
        .arg(translated("Device "), store.deviceIp(deviceIndex),
             row(translated("Status:"), marked(open ? translated("Opened") : translated("Closed"), open)),
             row(translated("CAN:"), channelList(store, deviceIndex, TzVciProtocolId::can, QStringLiteral("CAN"))),
             row(translated("LIN:"), channelList(store, deviceIndex, TzVciProtocolId::lin, QStringLiteral("LIN"))));
}
