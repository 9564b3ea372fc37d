// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcAttributeBlocks.h"

#include "database/dbc/DbcFile.h"
#include "database/text/Numbers.h"

#include <QStringList>

#include <map>
#include <vector>

namespace DbcStatements {

namespace {

const QLatin1String intType("INT");
const QLatin1String hexType("HEX");
const QLatin1String floatType("FLOAT");
const QLatin1String enumType("ENUM");
const QLatin1String stringType("STRING");
const QLatin1String statementEnd(";\n");

QString quoted(const QString &text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

QString withPlainQuotes(QString text)
{
    return text.replace(QLatin1String("\\\""), QLatin1String("\""));
}

QString rangeText(const DbcAttributeDefinition &definition)
{
    if (definition.valueType == intType || definition.valueType == hexType || definition.valueType == floatType)
        return definition.minimum.toString() + QLatin1Char(' ') + definition.maximum.toString();
    if (definition.valueType != enumType)
        return {};
    QStringList values;
    for (const QString &value : definition.enumValues)
        values.append(quoted(value));
    return values.join(QLatin1Char(','));
}

QString defaultText(const DbcAttributeDefinition &definition)
{
    const QString text = definition.defaultValue.toString();
    if (definition.valueType == stringType || definition.valueType == enumType)
        return quoted(text);
    if (definition.valueType == floatType)
        return QString::number(Common::Numbers::doubleOrZero(text), 'f', 6);
    if (definition.valueType == intType || definition.valueType == hexType)
        return QString::number(Common::Numbers::integerOrZero<qint64>(text)); // decimal: a prefix makes it 0
    return {};
}

// The names of the attributes whose values stand in quotes. The first definition of a name decides.
class TextAttributes
{
public:
    explicit TextAttributes(const std::vector<DbcAttributeDefinition> &definitions)
    {
        for (const DbcAttributeDefinition &definition : definitions)
            m_isText.try_emplace(definition.name,
                                 definition.valueType == stringType || definition.valueType == enumType);
    }
    bool contains(const QString &name) const
    {
        const auto found = m_isText.find(name);
        return found != m_isText.end() && found->second;
    }

private:
    std::map<QString, bool> m_isText; // by name; ordered, so that no choice of names makes it slow
};

QString statement(const QString &name, const QString &object, const QString &value)
{
    return QStringLiteral("BA_ ") + quoted(name) + QLatin1Char(' ') + object + value + statementEnd;
}

QString fileValuesText(const DbcFile &file, const TextAttributes &textAttributes)
{
    QString text;
    for (const DbcAttributeValue &attribute : file.attributes) {
        const bool isText = textAttributes.contains(attribute.name);
        text += statement(withPlainQuotes(attribute.name), {},
                          isText ? quoted(withPlainQuotes(attribute.value)) : attribute.value);
    }
    return text;
}

QString nodeValuesText(const DbcFile &file, const TextAttributes &textAttributes)
{
    QString text;
    for (const DbcNode &node : file.nodes) {
        const QString object = QStringLiteral("BU_ ") + node.name + QLatin1Char(' ');
        for (const DbcAttributeValue &attribute : node.attributes) {
            const bool isText = textAttributes.contains(attribute.name);
            text += statement(attribute.name, object, isText ? quoted(attribute.value) : attribute.value);
        }
    }
    return text;
}

// Values of messages and signals are never quoted.
QString messageValuesText(const DbcMessage &message)
{
    const QString id = QString::number(message.id) + QLatin1Char(' ');
    QString text;
    for (const DbcAttributeValue &attribute : message.attributes)
        text += statement(attribute.name, QStringLiteral("BO_ ") + id, attribute.value);
    for (const DbcSignal &signal : message.signals) {
        const QString object = QStringLiteral("SG_ ") + id + signal.name + QLatin1Char(' ');
        for (const DbcAttributeValue &attribute : signal.attributes)
            text += statement(attribute.name, object, attribute.value);
    }
    return text;
}

} // namespace

QString attributeDefinitionsText(const DbcFile &file)
{
    QString text;
    for (const DbcAttributeDefinition &definition : file.attributeDefinitions) {
        text += QStringLiteral("BA_DEF_ ");
        if (!definition.objectType.isEmpty())
            text += definition.objectType + QLatin1Char(' ');
        text += quoted(definition.name) + QLatin1Char(' ') + definition.valueType + QLatin1Char(' ') +
                rangeText(definition) + statementEnd;
    }
    return text;
}

QString attributeDefaultsText(const DbcFile &file)
{
    QString text;
    for (const DbcAttributeDefinition &definition : file.attributeDefinitions) {
        if (!definition.defaultValue.isNull())
            text += QStringLiteral("BA_DEF_DEF_ ") + quoted(definition.name) + QLatin1Char(' ') +
                    defaultText(definition) + statementEnd;
    }
    return text;
}

QString attributeValuesText(const DbcFile &file)
{
    const TextAttributes textAttributes(file.attributeDefinitions);
    QString text = fileValuesText(file, textAttributes) + nodeValuesText(file, textAttributes);
    for (const DbcMessage &message : file.specialMessages)
        text += messageValuesText(message);
    for (const DbcMessage &message : file.messages)
        text += messageValuesText(message);
    return text;
}

} // namespace DbcStatements
