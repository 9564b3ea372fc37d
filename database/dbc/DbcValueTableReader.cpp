// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcValueTableReader.h"

#include "common/Log.h"
#include "database/dbc/DbcFile.h"
#include "database/dbc/DbcScan.h"
#include "database/text/JoinedStatements.h"
#include "database/text/LogText.h"
#include "database/text/Numbers.h"
#include "database/text/Sections.h"

#include <QRegularExpression>
#include <QSet>

using Common::LogText;

namespace DbcValueTableReader {

namespace {

bool isAcceptable(const DbcValueTable &table, const QSet<QString> &knownNames)
{
    if (table.name.isEmpty()) {
        Common::logError("Value table name cannot be empty");
        return false;
    }
    if (knownNames.contains(table.name)) {
        Common::logError("Duplicate value table name: {}", LogText(table.name));
        return false;
    }
    if (table.entries.empty())
        Common::logWarning("Value table {} has no entries", LogText(table.name));
    return true;
}

void readValueTable(QStringView statement, QSet<QString> &knownNames, DbcFile &file)
{
    static const QRegularExpression pattern(QStringLiteral(R"(^VAL_TABLE_\s+(\w+)\s+(.*);$)"));
    const QRegularExpressionMatch match = Common::Sections::match(pattern, statement.toString());
    if (!match.hasMatch()) {
        Common::logError("Failed to parse VAL_TABLE_ block: {}", LogText(statement));
        return;
    }
    DbcValueTable table;
    table.name = match.captured(1);
    if (!readPairs(match.capturedView(2).trimmed(), table.entries)) {
        Common::logError("Failed to parse value descriptions for table {}", LogText(table.name));
        return;
    }
    if (!isAcceptable(table, knownNames)) {
        Common::logWarning("Value table {} failed validation or already exists", LogText(table.name));
        return;
    }
    knownNames.insert(table.name);
    file.valueTables.push_back(std::move(table));
}

void describeSignal(const DbcScan::ValueDescription &statement, QStringView pairs, DbcFile &file)
{
    const auto number = Common::Numbers::integerOrZero<std::uint32_t>(statement.number);
    DbcSignal *signal = file.findSignal(number, statement.name);
    if (signal == nullptr) {
        Common::logWarning("Signal {} not found in message {}", LogText(statement.name), number);
        return;
    }
    if (!pairs.isEmpty() && !readPairs(pairs, signal->valueDescriptions)) {
        Common::logError("Failed to parse value descriptions for signal {} in message {}\n {}", LogText(statement.name),
                         number, LogText(pairs));
    }
}

// Unlike a VAL_TABLE_, this one is kept whether or not its name is taken and whatever it holds.
void addTable(const DbcScan::ValueDescription &statement, QStringView pairs, DbcFile &file)
{
    DbcValueTable table;
    table.name = statement.name.toString();
    if (!pairs.isEmpty() && !readPairs(pairs, table.entries)) {
        Common::logError("Failed to parse value descriptions for table {}\n {}", LogText(table.name), LogText(pairs));
    }
    file.valueTables.push_back(std::move(table));
}

} // namespace

bool readPairs(QStringView text, std::unordered_map<std::uint32_t, QString> &entries)
{
    qsizetype position = 0;
    while (const auto pair = DbcScan::findValuePair(text, position)) {
        if (const auto key = Common::Numbers::readInteger<std::uint32_t>(pair->key))
            entries.insert_or_assign(*key, pair->text.toString());
        position = pair->end;
    }
    return !entries.empty();
}

void readValueTables(const QString &text, DbcFile &file)
{
    QSet<QString> knownNames;
    for (const DbcValueTable &table : file.valueTables)
        knownNames.insert(table.name);
    Common::JoinedStatements statements(text, u"VAL_TABLE_");
    while (const auto statement = statements.next())
        readValueTable(*statement, knownNames, file);
}

void readValueDescriptions(const QString &text, DbcFile &file)
{
    Common::JoinedStatements statements(text, u"VAL_");
    while (const auto statement = statements.next()) {
        const auto description = DbcScan::readValueDescription(*statement);
        if (!description) {
            Common::logError("Failed to parse VAL_ block: {}", LogText(*statement));
            continue;
        }
        const QStringView pairs = description->pairs.trimmed();
        if (description->number.isEmpty())
            addTable(*description, pairs, file);
        else
            describeSignal(*description, pairs, file);
    }
}

} // namespace DbcValueTableReader
