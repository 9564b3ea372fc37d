// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcAttributeDefinitionReader.h"

#include "common/Log.h"
#include "database/dbc/DbcFile.h"
#include "database/dbc/DbcScan.h"
#include "database/text/KeyedHash.h"
#include "database/text/LogText.h"
#include "database/text/QuotedText.h"

#include <utility>

using Common::LogText;

namespace DbcAttributeDefinitionReader {

namespace {

bool readLimits(QStringView range, DbcAttributeDefinition &definition)
{
    const auto limits = DbcScan::twoWords(range);
    if (!limits) {
        Common::logError("Invalid value range format for attribute {}: {}", LogText(definition.name), LogText(range));
        return false;
    }
    definition.minimum = limits->front().toString();
    definition.maximum = limits->back().toString();
    return true;
}

bool readRange(QStringView range, DbcAttributeDefinition &definition)
{
    const QString &type = definition.valueType;
    if (type == QLatin1String("INT") || type == QLatin1String("HEX") || type == QLatin1String("FLOAT"))
        return readLimits(range, definition);
    if (type == QLatin1String("ENUM")) {
        definition.enumValues = DbcScan::splitEnumValues(range);
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
    Common::TextViewMap<DbcAttributeDefinition *> firstOfName;
    for (DbcAttributeDefinition &definition : file.attributeDefinitions)
        firstOfName.emplace(definition.name, &definition);
    qsizetype position = 0;
    while (const auto statement = DbcScan::findAttributeDefault(text, position)) {
        position = statement->end;
        const auto definition = firstOfName.find(statement->name);
        if (definition != firstOfName.end())
            definition->second->defaultValue = Common::withoutQuotes(statement->value.trimmed()).toString();
        else
            Common::logWarning("Attribute not found for default value: {}", LogText(statement->name));
    }
}

} // namespace DbcAttributeDefinitionReader
