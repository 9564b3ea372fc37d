// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcValueTableReader.h"

#include "common/Log.h"
#include "database/dbc/DbcFile.h"
#include "database/dbc/DbcScan.h"
#include "database/text/JoinedStatements.h"
#include "database/text/KeyedHash.h"
#include "database/text/LogText.h"
#include "database/text/Numbers.h"
#include "database/text/RecentTexts.h"
#include "database/text/Sections.h"

#include <QRegularExpression>

#include <functional>

using Common::LogText;

namespace DbcValueTableReader {

namespace {

using Texts = Common::RecentTexts<QString>; // signals of one kind have the same few descriptions

// Enters every pair of a number and a quoted text; a later pair of the same number wins, a number beyond 32 bits is
// passed over. A sign is not part of the number: `-1 "x"` has the key 1. True if the entries hold anything now.
bool readPairs(QStringView text, Texts &texts, DbcValueTexts &entries)
{
    qsizetype position = 0;
    while (const auto pair = DbcScan::findValuePair(text, position)) {
        if (const auto key = Common::Numbers::readInteger<std::uint32_t>(pair->key))
            entries.insert_or_assign(*key, texts.valueOf(pair->text, std::identity()));
        position = pair->end;
    }
    return !entries.empty();
}

void readValueTable(QStringView statement, Texts &texts, Common::TextSet &knownNames, DbcFile &file)
{
    static const QRegularExpression pattern(QStringLiteral(R"(^VAL_TABLE_\s+(\w+)\s+(.*);$)"));
    const QRegularExpressionMatch match = Common::Sections::match(pattern, statement.toString());
    if (!match.hasMatch()) {
        Common::logError("Failed to parse VAL_TABLE_ block: {}", LogText(statement));
        return;
    }
    DbcValueTable table;
    table.name = match.captured(1);
    if (!readPairs(match.capturedView(2).trimmed(), texts, table.entries)) {
        Common::logError("Failed to parse value descriptions for table {}", LogText(table.name));
        return;
    }
    if (!isAcceptable(table, knownNames.find(table.name) != knownNames.end())) {
        Common::logWarning("Value table {} failed validation or already exists", LogText(table.name));
        return;
    }
    knownNames.insert(table.name);
    file.valueTables.push_back(std::move(table));
}

void describeSignal(const DbcScan::ValueDescription &statement, QStringView pairs, Texts &texts, DbcFile &file)
{
    const auto number = Common::Numbers::integerOrZero<std::uint32_t>(statement.number);
    DbcSignal *signal = file.findSignal(number, statement.name);
    if (signal == nullptr) {
        Common::logWarning("Signal {} not found in message {}", LogText(statement.name), number);
        return;
    }
    if (!pairs.isEmpty() && !readPairs(pairs, texts, signal->valueDescriptions)) {
        Common::logError("Failed to parse value descriptions for signal {} in message {}\n {}", LogText(statement.name),
                         number, LogText(pairs));
    }
}

// Unlike a VAL_TABLE_, this one is kept whether or not its name is taken and whatever it holds.
void addTable(const DbcScan::ValueDescription &statement, QStringView pairs, Texts &texts, DbcFile &file)
{
    DbcValueTable table;
    table.name = statement.name.toString();
    if (!pairs.isEmpty() && !readPairs(pairs, texts, table.entries)) {
        Common::logError("Failed to parse value descriptions for table {}\n {}", LogText(table.name), LogText(pairs));
    }
    file.valueTables.push_back(std::move(table));
}

} // namespace

bool isAcceptable(const DbcValueTable &table, bool isNameTaken)
{
    if (table.name.isEmpty()) {
        Common::logError("Value table name cannot be empty");
        return false;
    }
    if (isNameTaken) {
        Common::logError("Duplicate value table name: {}", LogText(table.name));
        return false;
    }
    if (table.entries.empty())
        Common::logWarning("Value table {} has no entries", LogText(table.name));
    return true;
}

void readValueTables(const QString &text, DbcFile &file)
{
    Common::TextSet knownNames;
    Texts texts;
    for (const DbcValueTable &table : file.valueTables)
        knownNames.insert(table.name);
    Common::JoinedStatements statements(text, u"VAL_TABLE_");
    while (const auto statement = statements.next())
        readValueTable(*statement, texts, knownNames, file);
}

void readValueDescriptions(const QString &text, DbcFile &file)
{
    Texts texts;
    Common::JoinedStatements statements(text, u"VAL_");
    while (const auto statement = statements.next()) {
        const auto description = DbcScan::readValueDescription(*statement);
        if (!description) {
            Common::logError("Failed to parse VAL_ block: {}", LogText(*statement));
            continue;
        }
        const QStringView pairs = description->pairs.trimmed();
        if (description->number.isEmpty())
            addTable(*description, pairs, texts, file);
        else
            describeSignal(*description, pairs, texts, file);
    }
}

} // namespace DbcValueTableReader
