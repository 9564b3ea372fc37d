// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcStatements.h"

#include "database/dbc/DbcAttributeBlocks.h"
#include "database/dbc/DbcFile.h"
#include "database/dbc/DbcMessage.h"
#include "database/dbc/DbcSignal.h"
#include "database/text/Sections.h"

#include <QRegularExpression>
#include <QStringList>

#include <cstdint>
#include <map>

namespace DbcStatements {

namespace {

const QChar blank(QLatin1Char(' '));
const QChar lineEnd(QLatin1Char('\n'));

// An unordered map in ascending order of its keys, each entry behind a blank.
QString entriesText(const DbcValueTexts &entries, const QString &before, const QString &behind)
{
    QString text;
    for (const auto &[key, description] : std::map(entries.begin(), entries.end()))
        text += before + QString::number(key) + QStringLiteral(" \"") + description + QLatin1Char('"') + behind;
    return text;
}

QString realText(double value)
{
    return QString::number(value, 'g', 6);
}

QString multiplexMark(const DbcSignal &signal)
{
    if (signal.isMultiplexor)
        return QStringLiteral(" M");
    return signal.isMultiplexed ? QStringLiteral(" m") + QString::number(signal.multiplexValue) : QString();
}

// The line without its end. By concatenation: a unit may hold the place marks of QString::arg.
QString signalLine(const DbcSignal &signal, const QString &receivers)
{
    return QStringLiteral(" SG_ ") + signal.name + multiplexMark(signal) + QStringLiteral(" : ") +
           QString::number(signal.startBit) + QLatin1Char('|') + QString::number(signal.size) + QLatin1Char('@') +
           QLatin1Char(signal.isBigEndian ? '0' : '1') + QLatin1Char(signal.isSigned ? '-' : '+') +
           QStringLiteral(" (") + realText(signal.factor) + QLatin1Char(',') + realText(signal.offset) +
           QStringLiteral(") [") + realText(signal.minimum) + QLatin1Char('|') + realText(signal.maximum) +
           QStringLiteral("] \"") + signal.unit + QStringLiteral("\" ") + receivers;
}

QString receiversText(const DbcSignal &signal)
{
    return signal.receivers.isEmpty() ? QStringLiteral("Vector__XXX") : signal.receivers.join(QLatin1Char(','));
}

QString messageLine(const DbcMessage &message)
{
    return QStringLiteral("BO_ ") + QString::number(message.id) + blank + message.name + QStringLiteral(": ") +
           QString::number(message.size) + blank + message.transmitter + lineEnd;
}

QString messageText(const DbcMessage &message)
{
    QString text = messageLine(message);
    for (const DbcSignal &signal : message.signals)
        text += signalLine(signal, receiversText(signal)) + lineEnd;
    return text + lineEnd;
}

QString headText(const DbcFile &file)
{
    QString text = QStringLiteral("VERSION \"") + file.version + QStringLiteral("\"\n\nNS_ :\n");
    for (const QString &symbol : file.newSymbols)
        text += QLatin1Char('\t') + symbol + lineEnd;
    text += QStringLiteral("\nBS_:\n\nBU_:");
    for (const DbcNode &node : file.nodes)
        text += blank + node.name;
    return text + QStringLiteral("\n\n");
}

QString valueTablesText(const DbcFile &file)
{
    QString text;
    for (const DbcValueTable &table : file.valueTables) {
        if (!table.entries.empty())
            text += QStringLiteral("VAL_TABLE_ ") + table.name + blank + entriesText(table.entries, {}, blank) +
                    QStringLiteral(";\n");
    }
    return text + lineEnd;
}

QString messagesText(const DbcFile &file)
{
    QString text;
    for (const DbcMessage &message : file.specialMessages)
        text += messageText(message);
    for (const DbcMessage &message : file.messages)
        text += messageText(message);
    return text + lineEnd;
}

QString commentsText(const DbcFile &file)
{
    QString text;
    for (const QString &comment : file.comments)
        text += QStringLiteral("CM_ \"") + comment + QStringLiteral("\";\n");
    for (const DbcMessage &message : file.messages) {
        const QString id = QString::number(message.id);
        if (!message.comment.isEmpty())
            text += QStringLiteral("CM_ BO_ ") + id + QStringLiteral(" \"") + message.comment + QStringLiteral("\";\n");
        for (const DbcSignal &signal : message.signals) {
            if (!signal.comment.isEmpty())
                text += QStringLiteral("CM_ SG_ ") + id + blank + signal.name + QStringLiteral(" \"") + signal.comment +
                        QStringLiteral("\";\n");
        }
    }
    return text + lineEnd;
}

QString descriptionsText(const std::vector<DbcMessage> &messages)
{
    QString text;
    for (const DbcMessage &message : messages) {
        for (const DbcSignal &signal : message.signals) {
            if (!signal.valueDescriptions.empty())
                text += QStringLiteral("VAL_ ") + QString::number(message.id) + blank + signal.name +
                        entriesText(signal.valueDescriptions, blank, {}) + QStringLiteral(";\n");
        }
    }
    return text;
}

QString valueTypesText(const DbcFile &file)
{
    QString text;
    for (const DbcSignalValueType &type : file.signalValueTypes)
        text += QStringLiteral("SIG_VALTYPE_ ") + QString::number(type.messageId) + blank + type.signalName +
                QStringLiteral(" : ") + QString::number(type.type) + QStringLiteral(";\n");
    return text;
}

QString multiplexValuesText(const DbcFile &file)
{
    QString text;
    for (const DbcSignalMultiplexValue &value : file.signalMultiplexValues)
        text += QStringLiteral("SG_MUL_VAL_ ") + QString::number(value.messageId) + blank + value.signalName + blank +
                value.multiplexorName + blank + value.ranges + QStringLiteral(";\n");
    return text;
}

// No "Vector__XXX" here: an empty list of receivers stays an empty field.
QString addedMessageText(const DbcMessage &message)
{
    QString text = messageLine(message);
    for (const DbcSignal &signal : message.signals)
        text += signalLine(signal, signal.receivers.join(QLatin1Char(','))) + lineEnd;
    return text;
}

// Index of the last line that is a signal, -1 without one.
int lastSignalLine(const QStringList &lines)
{
    static const QRegularExpression pattern(
        QStringLiteral(R"re(SG_\s+(\w+)(M|m\d+)?\s*:\s*(\d+)\|(\d+)@(\d+)([-+])\s*\(([+-]?[\d\.]+),([+-]?[\d\.]+)\))re"
                       R"re(\s*\[([+-]?[\d\.]+)\|([+-]?[\d\.]+)\]\s*"(.*)"\s*(.*?))re"));
    for (int line = lines.size() - 1; line >= 0; --line) {
        if (lines.at(line).contains(QLatin1String("SG_")) &&
            Common::Sections::match(pattern, lines.at(line)).hasMatch())
            return line;
    }
    return -1;
}

} // namespace

QString fileText(const DbcFile &file)
{
    return headText(file) + valueTablesText(file) + messagesText(file) + commentsText(file) +
           attributeDefinitionsText(file) + lineEnd + attributeDefaultsText(file) + lineEnd +
           attributeValuesText(file) + lineEnd + descriptionsText(file.specialMessages) +
           descriptionsText(file.messages) + lineEnd + valueTypesText(file) + lineEnd + multiplexValuesText(file) +
           lineEnd;
}

QString mergedText(const QString &source, const std::vector<DbcMessage> &messages)
{
    QStringList lines = source.split(lineEnd);
    int cursor = lastSignalLine(lines);
    if (cursor >= 0)
        lines.insert(++cursor, QString(lineEnd));
    QStringList added;
    for (const DbcMessage &message : messages)
        added.append(addedMessageText(message));
    return (lines.mid(0, cursor + 1) + added + lines.mid(cursor + 1)).join(lineEnd);
}

} // namespace DbcStatements
