// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/database/corpus/LdfCompare.h"

#include "tests/database/corpus/Comparison.h"
#include "tests/database/corpus/LdfPeriods.h"
#include "tests/database/corpus/LdfRefusals.h"
#include "tests/database/corpus/LdfSignalRules.h"

#include <algorithm>
#include <memory>

namespace tzcorpus {

namespace {

QStringList sorted(QStringList texts)
{
    texts.sort();
    return texts;
}

template <typename Map> QStringList namesOf(const Map &map)
{
    QStringList names;
    for (const auto &[name, record] : map)
        names += name;
    return names;
}

template <typename List> QStringList sortedNamesOf(const List &list)
{
    QStringList names;
    for (const auto &record : list)
        names += record.name;
    return sorted(names);
}

LdfProtocolVersion versionOf(const QString &text)
{
    static const std::map<QString, LdfProtocolVersion> versions{
        {QStringLiteral("1.3"), LdfProtocolVersion::lin13},
        {QStringLiteral("2.0"), LdfProtocolVersion::lin20},
        {QStringLiteral("2.1"), LdfProtocolVersion::lin21},
        {QStringLiteral("2.2"), LdfProtocolVersion::lin22},
        {QStringLiteral("J2602_1_1.0"), LdfProtocolVersion::j2602Rev110},
        {QStringLiteral("J2602_3_1.0"), LdfProtocolVersion::j2602Rev310},
        {QStringLiteral("ISO17987:2015"), LdfProtocolVersion::iso17987Year2015},
        {QStringLiteral("ISO17987:2016"), LdfProtocolVersion::iso17987Year2016},
        {QStringLiteral("ISO17987:2017"), LdfProtocolVersion::iso17987Year2017},
    };
    const auto found = versions.find(text);
    if (found != versions.end())
        return found->second;
    return text.startsWith(QLatin1String("J2602")) ? LdfProtocolVersion::j2602Rev210 : LdfProtocolVersion::lin20;
}

QStringList compareHeader(const LdfGolden &golden, const LdfConfig &actual)
{
    Comparison result(QStringLiteral("file"));
    result.field("protocolVersion", static_cast<int>(versionOf(golden.protocolVersion)),
                 static_cast<int>(actual.protocolVersion));
    result.field("busSpeed", golden.baudrate / 1000.0, actual.busSpeed);
    result.field("channelName", golden.channel.isEmpty() ? QStringLiteral("LIN") : golden.channel, actual.channelName);
    result.field("master", golden.master, actual.master.name);
    result.field("timeBase", golden.timeBaseMs, actual.master.timeBase);
    result.field("jitter", golden.jitterMs, actual.master.jitter);
    result.field("slaves", sorted(golden.slaves), namesOf(actual.slaves));
    return result.differences();
}

QStringList linesOf(const std::shared_ptr<const LdfEncoding> &encoding)
{
    if (!encoding)
        return {};
    QStringList lines{encoding->name};
    for (const auto &[key, range] : encoding->physicalRanges)
        lines += QStringLiteral("%1: %2..%3 %4 %5 %6")
                     .arg(key)
                     .arg(range.minRaw)
                     .arg(range.maxRaw)
                     .arg(range.factor, 0, 'g', 17)
                     .arg(range.offset, 0, 'g', 17)
                     .arg(range.unit);
    for (const auto &[key, text] : encoding->logicalValues)
        lines += QStringLiteral("%1: %2").arg(key).arg(text);
    return lines;
}

QStringList compareSignal(const QString &where, const LdfSignal &expected, const LdfSignal &actual)
{
    Comparison result(where + u'.' + expected.name);
    QStringList subscribers = actual.subscribers;
    subscribers.removeAll(QLatin1String(invented));
    result.field("startBit", expected.startBit, actual.startBit);
    result.field("size", expected.size, actual.size);
    result.field("value", qulonglong(expected.value), qulonglong(actual.value));
    result.field("publisher", expected.publisher, actual.publisher);
    result.field("subscribers", sorted(expected.subscribers), sorted(subscribers));
    result.field("encoding", linesOf(expected.encoding), linesOf(actual.encoding));
    return result.differences();
}

QStringList compareFrame(const LdfGolden &golden, const QString &text, const GoldenLdfFrame &expected,
                         const LdfFrame &actual)
{
    Comparison result(expected.name);
    result.field("id", expected.id % 64, std::uint32_t(actual.id)); // a mended file has them lowered
    result.field("size", expected.size, std::uint32_t(actual.size));
    result.field("publisher", expected.publisher, actual.publisher);
    result.field("isMasterFrame", expected.publisher == golden.master, actual.isMasterFrame);
    result.field("signals", sortedNamesOf(expected.signals), namesOf(actual.signals));
    for (const GoldenLdfSignal &signal : expected.signals) {
        const auto found = actual.signals.find(signal.name);
        if (found != actual.signals.end())
            result.append(compareSignal(expected.name, expectedSignal(golden, text, signal), found->second));
    }
    return result.differences();
}

QStringList compareFrames(const LdfGolden &golden, const QString &text, const LdfConfig &actual)
{
    Comparison result(QStringLiteral("frames"));
    result.field("names", sortedNamesOf(golden.frames), namesOf(actual.frames));
    for (const GoldenLdfFrame &frame : golden.frames) {
        const auto found = actual.frames.find(frame.name);
        if (found == actual.frames.end())
            continue;
        result.append(compareFrame(golden, text, frame, found->second));
        result.append(comparePeriods(golden, frame.name, found->second, actual.protocolVersion));
    }
    for (const GoldenLdfFrame &frame : golden.diagnosticFrames) {
        const auto found = actual.diagnosticFrames.find(frame.name);
        result.field("diagnostic frame", true, found != actual.diagnosticFrames.end());
        if (found != actual.diagnosticFrames.end())
            result.field("its signals", sortedNamesOf(frame.signals), namesOf(found->second.signals));
    }
    return result.differences();
}

QStringList compareGroups(const LdfGolden &golden, const LdfConfig &actual)
{
    Comparison result(QStringLiteral("groups"));
    result.field("event-triggered", sortedNamesOf(golden.eventTriggeredFrames), namesOf(actual.eventTriggeredFrames));
    result.field("sporadic", sortedNamesOf(golden.sporadicFrames), namesOf(actual.sporadicFrames));
    for (const GoldenLdfGroup &group : golden.eventTriggeredFrames) {
        const auto found = actual.eventTriggeredFrames.find(group.name);
        if (found == actual.eventTriggeredFrames.end())
            continue;
        result.field("id", static_cast<int>(group.id), found->second.id);
        result.field("collisionTable", group.collisionTable, found->second.collisionTable);
        result.field("frames", sorted(group.frames), sorted(found->second.frames));
        for (const QString &frame : group.frames)
            result.field("isEventTriggered", true,
                         actual.frames.count(frame) != 0 && actual.frames.at(frame).isEventTriggered);
    }
    for (const GoldenLdfGroup &group : golden.sporadicFrames) {
        const auto found = actual.sporadicFrames.find(group.name);
        if (found != actual.sporadicFrames.end())
            result.field("frames", sorted(group.frames), sorted(found->second));
    }
    return result.differences();
}

QStringList compareTables(const LdfGolden &golden, const LdfConfig &actual)
{
    Comparison result(QStringLiteral("schedule tables"));
    result.field("count", golden.scheduleTables.size(), actual.scheduleTables.size());
    for (std::size_t at = 0; at < std::min(golden.scheduleTables.size(), actual.scheduleTables.size()); ++at) {
        const GoldenLdfTable &expected = golden.scheduleTables[at];
        const LdfScheduleTable &table = actual.scheduleTables[at];
        const bool hasCommands = expected.name == QLatin1String("InitTable");
        QStringList expectedSlots;
        for (const GoldenLdfEntry &entry : expected.entries) {
            if (hasCommands || !entry.frame.isEmpty()) // commands were taken out of the other tables
                expectedSlots += QStringLiteral("%1 %2").arg(entry.frame).arg(entry.delayMs);
        }
        QStringList actualSlots;
        for (const LdfScheduleEntry &entry : table.entries)
            actualSlots += QStringLiteral("%1 %2").arg(entry.frameName).arg(entry.delay);
        result.field("name", expected.name, table.name);
        result.field(qUtf8Printable(expected.name), expectedSlots, actualSlots);
    }
    return result.differences();
}

} // namespace

QStringList compareLdf(const LdfGolden &golden, const QString &text, const LdfConfig &actual)
{
    return compareHeader(golden, actual) + compareFrames(golden, text, actual) + compareGroups(golden, actual) +
           compareTables(golden, actual);
}

} // namespace tzcorpus
