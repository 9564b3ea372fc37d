// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcSignalMultiplexReader.h"

#include "common/Log.h"
#include "database/dbc/DbcFile.h"
#include "database/dbc/DbcScan.h"
#include "database/text/JoinedStatements.h"
#include "database/text/LogText.h"
#include "database/text/Numbers.h"
#include "database/text/Sections.h"

#include <QRegularExpression>

using Common::LogText;
using Common::Numbers::integerOrZero;

namespace DbcSignalMultiplexReader {

namespace {

bool areValidRanges(QStringView ranges)
{
    auto range = DbcScan::findNumberRange(ranges, 0);
    if (!range) {
        Common::logError("Invalid multiplexor value range format: {}", LogText(ranges));
        return false;
    }
    for (; range; range = DbcScan::findNumberRange(ranges, range->end)) {
        const auto first = integerOrZero<std::uint32_t>(range->first);
        const auto last = integerOrZero<std::uint32_t>(range->last);
        if (first > last) {
            Common::logError("Invalid value range {}-{} for multiplexor", first, last);
            return false;
        }
    }
    return true;
}

void apply(const DbcSignalMultiplexValue &record, DbcFile &file)
{
    if (file.findMessage(record.messageId) == nullptr) {
        Common::logWarning("Message not found for signal multiplex value: {}", record.messageId);
        return;
    }
    DbcSignal *signal = file.findFirstSignal(record.messageId, record.signalName);
    if (signal == nullptr)
        return;
    signal->isMultiplexed = true;
    if (const auto range = DbcScan::findNumberRange(record.ranges, 0))
        signal->multiplexValue = integerOrZero<std::int32_t>(range->first);
}

void readStatement(const QString &statement, DbcFile &file)
{
    static const QRegularExpression pattern(QStringLiteral(R"(^SG_MUL_VAL_\s+(\d+)\s+(\w+)\s+(\w+)\s+(.+);$)"));
    const QRegularExpressionMatch match = Common::Sections::match(pattern, statement);
    if (!match.hasMatch()) {
        Common::logError("Failed to parse SG_MUL_VAL_ block: {}", LogText(statement));
        return;
    }
    DbcSignalMultiplexValue record;
    record.messageId = integerOrZero<std::uint32_t>(match.capturedView(1));
    record.signalName = match.captured(2);
    record.multiplexorName = match.captured(3);
    record.ranges = match.captured(4).trimmed();
    if (!isValid(record)) {
        Common::logError("Invalid signal multiplex value for signal {} in message {}", LogText(record.signalName),
                         record.messageId);
        return;
    }
    apply(record, file);
    file.signalMultiplexValues.push_back(std::move(record));
}

} // namespace

bool isValid(const DbcSignalMultiplexValue &record)
{
    if (record.signalName.isEmpty() || record.multiplexorName.isEmpty()) {
        Common::logError("Empty signal name or multiplexor signal name");
        return false;
    }
    return areValidRanges(record.ranges);
}

void readMultiplexValues(const QString &text, DbcFile &file)
{
    Common::JoinedStatements statements(text, u"SG_MUL_VAL_");
    while (const auto statement = statements.next())
        readStatement(statement->toString(), file);
}

} // namespace DbcSignalMultiplexReader
