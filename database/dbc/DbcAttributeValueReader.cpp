// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcAttributeValueReader.h"

#include "common/Log.h"
#include "database/dbc/DbcFile.h"
#include "database/dbc/DbcStartValue.h"
#include "database/text/LogText.h"
#include "database/text/Numbers.h"
#include "database/text/QuotedText.h"

#include <algorithm>
#include <functional>

using Common::LogText;

namespace {

constexpr QStringView frameFormatName = u"VFrameFormat";
constexpr QStringView bitRateSwitchName = u"CANFD_BRS";
constexpr QStringView startValueName = u"GenSigStartValue";

} // namespace

DbcAttributeValueReader::DbcAttributeValueReader(DbcFile &file)
    : m_file(file)
    , m_frameFormat(findMessageDefinition(frameFormatName))
{
    const DbcAttributeDefinition *bitRateSwitch = findMessageDefinition(bitRateSwitchName);
    m_switchesByDefault = bitRateSwitch != nullptr && bitRateSwitch->defaultValue.toString() == QLatin1String("1");
}

const DbcAttributeDefinition *DbcAttributeValueReader::findMessageDefinition(QStringView name) const
{
    const auto isWanted = [name](const DbcAttributeDefinition &definition) {
        return definition.name == name && definition.objectType == QLatin1String("BO_");
    };
    const auto &definitions = m_file.attributeDefinitions;
    const auto found = std::find_if(definitions.begin(), definitions.end(), isWanted);
    return found == definitions.end() ? nullptr : &*found;
}

void DbcAttributeValueReader::read(QStringView text)
{
    qsizetype position = 0;
    while (const auto statement = DbcScan::findAttributeValue(text, position)) {
        readStatement(*statement);
        position = statement->end;
    }
}

DbcAttributeValue DbcAttributeValueReader::recordOf(const DbcScan::AttributeValue &statement)
{
    return {m_texts.valueOf(statement.name, std::identity()),
            m_texts.valueOf(Common::withoutQuotes(statement.value.trimmed()), std::identity())};
}

void DbcAttributeValueReader::readStatement(const DbcScan::AttributeValue &statement)
{
    if (statement.objectKind.isEmpty())
        m_file.attributes.push_back(recordOf(statement));
    else if (statement.objectKind == QStringView(u"BU_"))
        readOfNode(statement);
    else if (statement.objectKind == QStringView(u"BO_"))
        readOfMessage(statement);
    else
        readOfSignal(statement);
}

void DbcAttributeValueReader::readOfNode(const DbcScan::AttributeValue &statement)
{
    if (DbcNode *node = m_file.findNode(statement.objectName))
        node->attributes.push_back(recordOf(statement));
}

void DbcAttributeValueReader::readOfMessage(const DbcScan::AttributeValue &statement)
{
    if (statement.number.isEmpty()) {
        Common::logWarning("Missing message ID for message attribute: {}", LogText(statement.name));
        return;
    }
    const auto number = Common::Numbers::integerOrZero<std::uint32_t>(statement.number);
    DbcMessage *message = m_file.findMessage(number);
    if (message == nullptr) {
        Common::logWarning("Message not found for attribute value: {}", number);
        return;
    }
    message->attributes.push_back(recordOf(statement));
    const DbcAttributeValue &attribute = message->attributes.back();
    if (attribute.name == bitRateSwitchName)
        m_switches.emplace(message, attribute.value == QLatin1String("1"));
    else if (attribute.name == frameFormatName)
        applyFrameFormat(*message, attribute.value);
}

void DbcAttributeValueReader::readOfSignal(const DbcScan::AttributeValue &statement)
{
    if (statement.number.isEmpty() || statement.objectName.isEmpty()) {
        Common::logWarning("Missing message ID or signal name for signal attribute: {}", LogText(statement.name));
        return;
    }
    const auto number = Common::Numbers::integerOrZero<std::uint32_t>(statement.number);
    DbcSignal *signal = m_file.findSignal(number, statement.objectName);
    if (signal == nullptr) {
        Common::logWarning("Signal {} not found in message {}", LogText(statement.objectName), number);
        return;
    }
    signal->attributes.push_back(recordOf(statement));
    const DbcAttributeValue &attribute = signal->attributes.back();
    if (attribute.name == startValueName)
        DbcStartValue::apply(attribute.value, *signal);
}

// The enumerator's text decides, also over the mark of an extended identifier: one that does not begin with "Extended",
// as that of a J1939 message, makes the message a standard one.
void DbcAttributeValueReader::applyFrameFormat(DbcMessage &message, const QString &value)
{
    if (m_frameFormat == nullptr || m_frameFormat->valueType != QLatin1String("ENUM")) {
        Common::logWarning("VFrameFormat attribute not found or not an ENUM type in message {}", LogText(message.name));
        return;
    }
    const auto index = Common::Numbers::readInteger<std::int32_t>(value);
    if (!index || *index < 0 || *index >= m_frameFormat->enumValues.size()) {
        Common::logWarning("Invalid VFrameFormat value {} in message {}", LogText(value), LogText(message.name));
        return;
    }
    const QString &format = m_frameFormat->enumValues.at(*index);
    message.isExtended = format.startsWith(QLatin1String("Extended"));
    message.isRemote = format.contains(QLatin1String("Remote"));
    message.isFd = format.contains(QLatin1String("FD"));
    message.isBrs = message.isFd && usesBitRateSwitch(message);
}

// A "0" of the message does not stand up against a default of "1", and a statement further on comes too late.
bool DbcAttributeValueReader::usesBitRateSwitch(const DbcMessage &message) const
{
    const auto own = m_switches.find(&message);
    return (own != m_switches.end() && own->second) || m_switchesByDefault;
}
