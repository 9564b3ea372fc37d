// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/database/corpus/DbcCompare.h"

#include "tests/database/corpus/Comparison.h"

#include <algorithm>
#include <map>

namespace tzcorpus {

namespace {

// Lists as lines of text, so that a difference can be read.
QStringList linesOf(const std::vector<DbcAttributeValue> &attributes)
{
    QStringList lines;
    for (const auto &attribute : attributes)
        lines += attribute.name + u'=' + attribute.value;
    return lines;
}

QStringList linesOf(const DbcValueTexts &entries)
{
    QStringList lines;
    for (const auto &[key, text] : std::map<std::uint32_t, QString>(entries.begin(), entries.end()))
        lines += QString::number(key) + u'=' + text;
    return lines;
}

QStringList linesOf(const std::vector<DbcValueTable> &tables)
{
    QStringList lines;
    for (const auto &table : tables)
        lines += table.name + u':' + linesOf(table.entries).join(u'|');
    return lines;
}

QStringList linesOf(const std::vector<DbcNode> &nodes)
{
    QStringList lines;
    for (const auto &node : nodes)
        lines += node.name + u':' + node.comment + u':' + linesOf(node.attributes).join(u'|');
    return lines;
}

QStringList linesOf(const std::vector<DbcAttributeDefinition> &definitions)
{
    QStringList lines;
    for (const auto &definition : definitions)
        lines += QStringList{definition.objectType,
                             definition.name,
                             definition.valueType,
                             definition.minimum.toString(),
                             definition.maximum.toString(),
                             definition.enumValues.join(u','),
                             definition.defaultValue.isNull() ? QStringLiteral("(none)")
                                                              : definition.defaultValue.toString()}
                     .join(u'|');
    return lines;
}

QStringList linesOf(const std::vector<DbcSignalValueType> &types)
{
    QStringList lines;
    for (const auto &type : types)
        lines += QStringLiteral("%1 %2 %3").arg(type.messageId).arg(type.signalName).arg(type.type);
    return lines;
}

QStringList linesOf(const std::vector<DbcSignalMultiplexValue> &values)
{
    QStringList lines;
    for (const auto &value : values)
        lines += QStringLiteral("%1 %2 %3 %4")
                     .arg(QString::number(value.messageId), value.signalName, value.multiplexorName, value.ranges);
    return lines;
}

QStringList compareSignals(const QString &where, const DbcSignal &expected, const DbcSignal &actual, Depth depth)
{
    Comparison result(where + u'.' + expected.name);
    result.field("name", expected.name, actual.name);
    result.field("valueType", int(expected.valueType), int(actual.valueType));
    result.field("isMultiplexor", expected.isMultiplexor, actual.isMultiplexor);
    result.field("isMultiplexed", expected.isMultiplexed, actual.isMultiplexed);
    result.field("multiplexValue", expected.multiplexValue, actual.multiplexValue);
    result.field("startBit", expected.startBit, actual.startBit);
    result.field("size", expected.size, actual.size);
    result.field("isBigEndian", expected.isBigEndian, actual.isBigEndian);
    result.field("isSigned", expected.isSigned, actual.isSigned);
    result.field("factor", expected.factor, actual.factor);
    result.field("offset", expected.offset, actual.offset);
    result.field("minimum", expected.minimum, actual.minimum);
    result.field("maximum", expected.maximum, actual.maximum);
    result.field("unit", expected.unit, actual.unit);
    result.field("receivers", expected.receivers, actual.receivers);
    result.field("valueDescriptions", linesOf(expected.valueDescriptions), linesOf(actual.valueDescriptions));
    result.field("comment", expected.comment, actual.comment);
    if (depth == Depth::everything) {
        result.field("value", qulonglong(expected.value), qulonglong(actual.value));
        result.field("attributes", linesOf(expected.attributes), linesOf(actual.attributes));
    }
    return result.differences();
}

QStringList compareMessageLists(const char *what, const std::vector<DbcMessage> &expected,
                                const std::vector<DbcMessage> &actual)
{
    Comparison result(QString::fromLatin1(what));
    result.field("count", expected.size(), actual.size());
    for (std::size_t at = 0; at < std::min(expected.size(), actual.size()); ++at)
        result.append(compareMessages(expected[at], actual[at], Depth::everything));
    return result.differences();
}

} // namespace

QStringList compareMessages(const DbcMessage &expected, const DbcMessage &actual, Depth depth)
{
    Comparison result(expected.name);
    result.field("id", expected.id, actual.id);
    result.field("name", expected.name, actual.name);
    result.field("size", int(expected.size), int(actual.size));
    result.field("transmitter", expected.transmitter, actual.transmitter);
    result.field("isExtended", expected.isExtended, actual.isExtended);
    result.field("isFd", expected.isFd, actual.isFd);
    result.field("isRemote", expected.isRemote, actual.isRemote);
    result.field("comment", expected.comment, actual.comment);
    result.field("number of signals", expected.signals.size(), actual.signals.size());
    if (depth == Depth::everything) {
        result.field("isBrs", expected.isBrs, actual.isBrs);
        result.field("isJ1939", expected.isJ1939, actual.isJ1939);
        result.field("attributes", linesOf(expected.attributes), linesOf(actual.attributes));
    }
    for (std::size_t at = 0; at < std::min(expected.signals.size(), actual.signals.size()); ++at)
        result.append(compareSignals(expected.name, expected.signals[at], actual.signals[at], depth));
    return result.differences();
}

QStringList compareFiles(const DbcFile &expected, const DbcFile &actual)
{
    Comparison result(QStringLiteral("file"));
    result.field("version", expected.version, actual.version);
    result.field("newSymbols", expected.newSymbols, actual.newSymbols);
    result.field("valueTables", linesOf(expected.valueTables), linesOf(actual.valueTables));
    result.field("nodes", linesOf(expected.nodes), linesOf(actual.nodes));
    result.field("attributeDefinitions", linesOf(expected.attributeDefinitions), linesOf(actual.attributeDefinitions));
    result.field("attributes", linesOf(expected.attributes), linesOf(actual.attributes));
    result.field("signalValueTypes", linesOf(expected.signalValueTypes), linesOf(actual.signalValueTypes));
    result.field("signalMultiplexValues", linesOf(expected.signalMultiplexValues),
                 linesOf(actual.signalMultiplexValues));
    result.append(compareMessageLists("messages", expected.messages, actual.messages));
    result.append(compareMessageLists("special messages", expected.specialMessages, actual.specialMessages));
    return result.differences();
}

} // namespace tzcorpus
