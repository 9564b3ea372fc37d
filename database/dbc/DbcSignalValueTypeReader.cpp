// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcSignalValueTypeReader.h"

#include "common/Log.h"
#include "database/dbc/DbcFile.h"
#include "database/text/JoinedStatements.h"
#include "database/text/LogText.h"
#include "database/text/Numbers.h"
#include "database/text/Sections.h"

#include <QRegularExpression>

#include <limits>

using Common::LogText;
using Common::Numbers::integerOrZero;

namespace DbcSignalValueTypeReader {

namespace {

void setSymmetricRange(DbcSignal &signal, double limit)
{
    signal.minimum = -limit;
    signal.maximum = limit;
}

void apply(std::uint16_t type, DbcSignal &signal)
{
    if (type == DbcValueType::float32 && signal.size != 32) {
        Common::logWarning("Float signal {} has non-standard size {} (expected 32)", LogText(signal.name), signal.size);
    } else if (type == DbcValueType::float64 && signal.size != 64) {
        Common::logWarning("Double signal {} has non-standard size {} (expected 64)", LogText(signal.name),
                           signal.size);
    }
    if (type == DbcValueType::float32 || type == DbcValueType::float64) {
        signal.factor = 1.0;
        signal.offset = 0.0;
    }
    if (type == DbcValueType::float32 && signal.size == 32)
        setSymmetricRange(signal, static_cast<double>(std::numeric_limits<float>::max()));
    else if (type == DbcValueType::float64 && signal.size == 64)
        setSymmetricRange(signal, std::numeric_limits<double>::max());
    Common::logDebug("Updated signal {} value type to {} with appropriate attributes", LogText(signal.name), type);
}

void readStatement(const QString &statement, DbcFile &file)
{
    static const QRegularExpression pattern(QStringLiteral(R"(^SIG_VALTYPE_\s+(\d+)\s+(\w+)\s*:\s*(\d+)\s*;)"));
    const QRegularExpressionMatch match = Common::Sections::match(pattern, statement);
    if (!match.hasMatch()) {
        Common::logWarning("Invalid SIG_VALTYPE_ block: {}", LogText(statement));
        return;
    }
    DbcSignalValueType record;
    record.messageId = integerOrZero<std::uint32_t>(match.capturedView(1));
    record.signalName = match.captured(2);
    record.type = integerOrZero<std::uint16_t>(match.capturedView(3));
    if (!isValid(record)) {
        Common::logError("Invalid signal value type for signal {} in message {}", LogText(record.signalName),
                         record.messageId);
        return;
    }
    if (DbcSignal *signal = file.findSignal(record.messageId, record.signalName))
        apply(record.type, *signal);
    file.signalValueTypes.push_back(std::move(record));
}

} // namespace

bool isValid(const DbcSignalValueType &record)
{
    if (record.type > DbcValueType::float64) {
        Common::logError("Invalid signal value type {} for signal {} in message {}", record.type,
                         LogText(record.signalName), record.messageId);
        return false;
    }
    if (record.signalName.isEmpty()) {
        Common::logError("Empty signal name in signal value type definition");
        return false;
    }
    return true;
}

void readValueTypes(const QString &text, DbcFile &file)
{
    Common::JoinedStatements statements(text, u"SIG_VALTYPE_");
    while (const auto statement = statements.next())
        readStatement(statement->toString(), file);
}

} // namespace DbcSignalValueTypeReader
