// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcAttributeDefinitionReader.h"

#include "common/Log.h"
#include "database/dbc/DbcFile.h"
#include "database/dbc/DbcScan.h"
#include "database/text/LogText.h"
#include "database/text/QuotedText.h"
#include "database/text/TextCursor.h"

#include <QHash>

#include <utility>

using Common::LogText;
using Common::TextCursor;

namespace DbcAttributeDefinitionReader {

namespace {

bool readLimits(QStringView range, DbcAttributeDefinition &definition)
{
    TextCursor cursor(range);
    const auto isNoBlank = [](QChar character) { return !Common::TextClass::isBlank(character); };
    const QStringView minimum = cursor.takeWhile(isNoBlank);
    const bool isSplit = !cursor.takeBlanks().isEmpty();
    const QStringView maximum = cursor.takeWhile(isNoBlank);
    if (!isSplit || !cursor.atEnd()) {
        Common::logError("Invalid value range format for attribute {}: {}", LogText(definition.name), LogText(range));
        return false;
    }
    definition.minimum = minimum.toString();
    definition.maximum = maximum.toString();
    return true;
}

// Without the first and the last quote, split at `"\s*,\s*"`.
QStringList splitEnumValues(QStringView range)
{
    if (range.startsWith(u'"'))
        range = range.mid(1);
    if (range.endsWith(u'"'))
        range.chop(1);
    QStringList values;
    qsizetype begin = 0;
    TextCursor cursor(range);
    QStringView skipped;
    while (cursor.takeUpTo(u'"', skipped)) {
        const qsizetype behindQuote = cursor.position();
        cursor.takeBlanks();
        const bool hasComma = cursor.take(u',');
        cursor.takeBlanks();
        if (hasComma && cursor.take(u'"')) {
            values.append(range.mid(begin, behindQuote - 1 - begin).toString());
            begin = cursor.position();
        } else {
            cursor.setPosition(behindQuote);
        }
    }
    values.append(range.mid(begin).toString());
    return values;
}

bool readRange(QStringView range, DbcAttributeDefinition &definition)
{
    const QString &type = definition.valueType;
    if (type == QLatin1String("INT") || type == QLatin1String("HEX") || type == QLatin1String("FLOAT"))
        return readLimits(range, definition);
    if (type == QLatin1String("ENUM")) {
        definition.enumValues = splitEnumValues(range);
        return true;
    }
    Common::logError("Unknown attribute value type: {}", LogText(type));
    return false;
}

} // namespace

void readDefinitions(QStringView text, DbcFile &file)
{
    qsizetype position = 0;
    while (const auto statement = DbcScan::findAttributeDefinition(text, position)) {
        position = statement->end;
        DbcAttributeDefinition definition;
        definition.objectType = statement->objectType.toString();
        definition.name = statement->name.toString();
        definition.valueType = statement->valueType.toString();
        const QStringView range = statement->range.trimmed();
        const bool hasRange = !range.isEmpty() && definition.valueType != QLatin1String("STRING");
        if (hasRange && !readRange(range, definition)) {
            Common::logWarning("Failed to parse value range for attribute: {}", LogText(definition.name));
            continue;
        }
        file.attributeDefinitions.push_back(std::move(definition));
    }
}

void readDefaults(QStringView text, DbcFile &file)
{
    QHash<QString, DbcAttributeDefinition *> firstOfName;
    for (auto definition = file.attributeDefinitions.rbegin(); definition != file.attributeDefinitions.rend();
         ++definition)
        firstOfName.insert(definition->name, &*definition);
    qsizetype position = 0;
    while (const auto statement = DbcScan::findAttributeDefault(text, position)) {
        position = statement->end;
        if (DbcAttributeDefinition *definition = firstOfName.value(statement->name.toString()))
            definition->defaultValue = Common::withoutQuotes(statement->value.trimmed()).toString();
        else
            Common::logWarning("Attribute not found for default value: {}", LogText(statement->name));
    }
}

} // namespace DbcAttributeDefinitionReader
