// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ui/DbcTooltips.h"

#include "common/Utils.h"
#include "common/ui/UiUtils.h"
#include "database/dbc/DbcMessage.h"
#include "database/dbc/DbcSendAttributes.h"
#include "database/dbc/DbcSignal.h"
#include "database/ui/ShortList.h"
#include "database/ui/TooltipLines.h"

#include <QCoreApplication>

#include <map>

namespace {

constexpr int maxSignals = 10;
constexpr int maxAttributes = 5;
constexpr int maxReceivers = 5;
constexpr int maxDescriptions = 10;

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(DbcTooltips)
};

QString numberText(double value)
{
    return QString::number(value, 'g', 6);
}

QString startBitText(const DbcSignal &signal)
{
    const QString stored = QString::number(signal.startBit);
    if (!signal.isBigEndian)
        return stored;
    return Text::tr("%1 [Vector: %2]")
        .arg(stored, QString::number(Common::Utils::getSignalActualStartBit(signal.startBit, signal.size, true)));
}

QString rangeText(const DbcSignal &signal)
{
    const QString range = Text::tr("%1 to %2").arg(numberText(signal.minimum), numberText(signal.maximum));
    return signal.unit.isEmpty() ? range : range + QLatin1Char(' ') + signal.unit;
}

void addCoding(TooltipLines &lines, const DbcSignal &signal)
{
    lines.add(Text::tr("Start Bit:"), startBitText(signal));
    lines.add(Text::tr("Size:"), Text::tr("%1 bits").arg(signal.size));
    lines.add(Text::tr("Format:"),
              Text::tr("%1, %2").arg(signal.isBigEndian ? Text::tr("Big Endian") : Text::tr("Little Endian"),
                                     signal.isSigned ? Text::tr("Signed") : Text::tr("Unsigned")));
    if (signal.factor != 1.0 || signal.offset != 0.0)
        lines.add(Text::tr("Encoding:"),
                  Text::tr("Physical = Raw × %1 + %2").arg(numberText(signal.factor), numberText(signal.offset)));
    if (signal.minimum != 0.0 || signal.maximum != 0.0)
        lines.add(Text::tr("Range:"), rangeText(signal));
    if (signal.isMultiplexor)
        lines.add(Text::tr("Multiplexing:"), Text::tr("Multiplexor signal"));
    else if (signal.isMultiplexed)
        lines.add(Text::tr("Multiplexing:"), Text::tr("Multiplexed signal (Value: %1)").arg(signal.multiplexValue));
}

void addReceivers(TooltipLines &lines, const DbcSignal &signal)
{
    if (signal.receivers.isEmpty())
        return;
    ShortList receivers(maxReceivers);
    for (const QString &receiver : signal.receivers)
        receivers.append(receiver);
    lines.addItems(Text::tr("Receivers:"), {receivers.items().join(QStringLiteral(", "))},
                   receivers.more(Text::tr("... and %1 more receivers")), {});
}

void addDescriptions(TooltipLines &lines, const DbcSignal &signal)
{
    if (signal.valueDescriptions.empty())
        return;
    ShortList descriptions(maxDescriptions);
    for (const auto &[value, text] : std::map(signal.valueDescriptions.begin(), signal.valueDescriptions.end()))
        descriptions.append(Text::tr("%1 = %2").arg(QString::number(value), text));
    lines.addItems(Text::tr("Value Descriptions:"), descriptions.items(),
                   descriptions.more(Text::tr("... and %1 more values")), {});
}

} // namespace

QString buildMessageTooltip(const DbcMessage &message)
{
    TooltipLines lines;
    if (!message.transmitter.isEmpty())
        lines.add(Text::tr("Transmitter:"), message.transmitter);
    lines.add(Text::tr("Send Type:"), getMessageSendTypeText(message));
    ShortList names(maxSignals);
    for (const DbcSignal &signal : message.signals)
        names.append(signal.name);
    if (!names.items().isEmpty())
        lines.addItems(Text::tr("Signals:"), names.items(), names.more(Text::tr("... and %1 more signals")));
    lines.addComment(message.comment);
    ShortList attributes(maxAttributes);
    for (const DbcAttributeValue &attribute : message.attributes)
        attributes.append(QStringLiteral("%1: %2").arg(attribute.name, attribute.value));
    if (!attributes.items().isEmpty())
        lines.addItems(Text::tr("Attributes:"), attributes.items(),
                       attributes.more(Text::tr("... and %1 more attributes")));
    return Common::UiUtils::formatToHtml(message.name, lines.html());
}

QString buildSignalTooltip(const DbcSignal &signal)
{
    TooltipLines lines;
    addCoding(lines, signal);
    addReceivers(lines, signal);
    addDescriptions(lines, signal);
    lines.addComment(shortComment(signal.comment, QStringLiteral("...")));
    return Common::UiUtils::formatToHtml(signal.name, lines.html());
}
