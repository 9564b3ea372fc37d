// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcSendAttributes.h"

#include "common/Log.h"
#include "database/dbc/DbcMessage.h"
#include "database/text/Numbers.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>

namespace {

// Values of GenMsgSendType that make a difference here.
constexpr std::int32_t cyclic = 0;
constexpr std::int32_t eventTriggered = 1;
constexpr std::int32_t eventAndCyclic = 2;
constexpr std::int32_t notSent = 5;

constexpr std::uint16_t defaultCycleTimeMs = 1000;
constexpr std::uint16_t minimumCycleTimeMs = 10;
constexpr std::uint16_t defaultStartDelayMs = 10;
constexpr std::uint16_t longestStartDelayMs = 1000;

// Null where the message has none of that name.
const QString *findAttribute(const DbcMessage &message, QLatin1String name)
{
    const auto &attributes = message.attributes;
    const auto found = std::find_if(attributes.begin(), attributes.end(),
                                    [&](const DbcAttributeValue &attribute) { return attribute.name == name; });
    return found == attributes.end() ? nullptr : &found->value;
}

std::uint16_t toMilliseconds(const QString &value)
{
    return static_cast<std::uint16_t>(Common::Numbers::integerOrZero<std::uint32_t>(value)); // the low 16 bits
}

} // namespace

std::int32_t getMessageSendType(const DbcMessage &message)
{
    const QString *value = findAttribute(message, QLatin1String("GenMsgSendType"));
    return value ? Common::Numbers::integerOrZero<std::int32_t>(*value) : cyclic;
}

std::uint16_t getMessageCycleTime(const DbcMessage &message)
{
    const std::int32_t sendType = getMessageSendType(message);
    const QString *value = findAttribute(message, QLatin1String("GenMsgCycleTime"));
    if (sendType == eventTriggered || sendType == notSent || !value)
        return defaultCycleTimeMs;
    const std::uint16_t cycleTime = toMilliseconds(*value);
    if (cycleTime == 0) {
        if (sendType != cyclic && sendType != eventAndCyclic)
            return 0;
        Common::logWarning("Message 0x{:X} has invalid cycle time (0) for cyclic transmission", message.id);
        return defaultCycleTimeMs;
    }
    if (cycleTime < minimumCycleTimeMs) {
        Common::logWarning("Message 0x{:X} cycle time ({}) is less than minimum ({})", message.id, cycleTime,
                           minimumCycleTimeMs);
        return minimumCycleTimeMs;
    }
    return cycleTime;
}

std::uint16_t getMessageStartDelay(const DbcMessage &message)
{
    const QString *value = findAttribute(message, QLatin1String("GenMsgStartDelayTime"));
    if (!value)
        return defaultStartDelayMs;
    const std::uint16_t delay = toMilliseconds(*value);
    if (delay > longestStartDelayMs)
        Common::logWarning("Message 0x{:X} start delay time ({}) is greater than cycle time", message.id, delay);
    return delay;
}

QString getMessageSendTypeText(const DbcMessage &message)
{
    static constexpr std::array texts{QT_TRANSLATE_NOOP("DbcSendAttributes", "Cyclic"),
                                      QT_TRANSLATE_NOOP("DbcSendAttributes", "Event Triggered"),
                                      QT_TRANSLATE_NOOP("DbcSendAttributes", "Event + Cyclic"),
                                      QT_TRANSLATE_NOOP("DbcSendAttributes", "Bit-Aligned Frame"),
                                      QT_TRANSLATE_NOOP("DbcSendAttributes", "Event with Min Cycle"),
                                      QT_TRANSLATE_NOOP("DbcSendAttributes", "Not Sent"),
                                      QT_TRANSLATE_NOOP("DbcSendAttributes", "On Change")};
    static constexpr const char *unknown = QT_TRANSLATE_NOOP("DbcSendAttributes", "Unknown");
    const auto index = static_cast<std::size_t>(getMessageSendType(message) & 0xFF);
    return QCoreApplication::translate("DbcSendAttributes", index < texts.size() ? texts[index] : unknown);
}
