// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ui/LdfTooltips.h"

#include "common/ui/UiUtils.h"
#include "database/ldf/LdfFrame.h"
#include "database/ldf/LdfSignal.h"
#include "database/ui/ShortList.h"
#include "database/ui/TooltipLines.h"

#include <QCoreApplication>

namespace {

constexpr int maxSignals = 10;
constexpr int maxSubscribers = 5;
constexpr int maxPhysicalRanges = 3;
constexpr int maxLogicalValues = 10;

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(LdfTooltips)
};

QString numberText(double value)
{
    return QString::number(value, 'g', 6);
}

QString typeText(std::uint32_t type)
{
    switch (type) {
    case LdfFrameType::unconditional: return Text::tr("Unconditional");
    case LdfFrameType::eventTriggered: return Text::tr("Event Triggered");
    case LdfFrameType::sporadic: return Text::tr("Sporadic");
    case LdfFrameType::diagnostic: return Text::tr("Diagnostic");
    default: return Text::tr("Unknown");
    }
}

QString periodText(const LdfFrame &frame)
{
    const QString minimum = numberText(frame.minPeriod);
    if (frame.minPeriod == frame.maxPeriod)
        return Text::tr("%1 ms").arg(minimum);
    return Text::tr("%1 - %2 ms").arg(minimum, numberText(frame.maxPeriod));
}

QString rangeText(const LdfPhysicalRange &range)
{
    const auto physical = [&](std::uint32_t raw) { return numberText(raw * range.factor + range.offset); };
    return Text::tr("Raw: %1-%2, Physical: %3-%4 %5 (factor: %6, offset: %7)")
        .arg(QString::number(range.minRaw), QString::number(range.maxRaw), physical(range.minRaw),
             physical(range.maxRaw), range.unit, numberText(range.factor), numberText(range.offset));
}

QStringList withMore(const ShortList &list, const QString &moreText)
{
    const QString more = list.more(moreText);
    return more.isEmpty() ? list.items() : list.items() + QStringList(more);
}

QStringList encodingItems(const LdfEncoding &encoding)
{
    ShortList ranges(maxPhysicalRanges);
    for (const auto &[maxRaw, range] : encoding.physicalRanges)
        ranges.append(rangeText(range));
    ShortList values(maxLogicalValues);
    for (const auto &[raw, text] : encoding.logicalValues)
        values.append(Text::tr("Value: %1 - %2").arg(QString::number(raw), text));
    return withMore(ranges, Text::tr("... and %1 more physical value ranges")) +
           withMore(values, Text::tr("... and %1 more logical values"));
}

} // namespace

QString buildFrameTooltip(const LdfFrame &frame)
{
    TooltipLines lines;
    lines.add(Text::tr("Type:"), typeText(frame.type));
    lines.add(Text::tr("Publisher:"), frame.publisher);
    if (!frame.signals.empty()) {
        ShortList names(maxSignals);
        for (const auto &[name, signal] : frame.signals)
            names.append(name);
        lines.addItems(Text::tr("Signals:"), names.items(), names.more(Text::tr("... and %1 more signals")));
    }
    if (frame.minPeriod > 0.0 || frame.maxPeriod > 0.0)
        lines.add(Text::tr("Period:"), periodText(frame));
    lines.addComment(frame.comment);
    return Common::UiUtils::formatToHtml(frame.name, lines.html());
}

QString buildSignalTooltip(const LdfSignal &signal)
{
    TooltipLines lines;
    lines.add(Text::tr("Publisher:"), signal.publisher);
    if (!signal.subscribers.isEmpty()) {
        ShortList subscribers(maxSubscribers);
        for (const QString &subscriber : signal.subscribers)
            subscribers.append(subscriber);
        lines.addItems(Text::tr("Subscribers:"), subscribers.items(),
                       subscribers.more(Text::tr("... and %1 more subscribers")));
    }
    if (signal.encoding)
        lines.addItems(Text::tr("Encoding Values:"), encodingItems(*signal.encoding), {});
    lines.addComment(shortComment(signal.comment, {}));
    return Common::UiUtils::formatToHtml(signal.name, lines.html());
}
