// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/database/corpus/DbcGolden.h"

#include "tests/database/corpus/Corpus.h"

#include <QJsonArray>

namespace tzcorpus {

namespace {

QString textOf(const QJsonObject &json, const char *key)
{
    return json.value(QLatin1String(key)).toString();
}

std::uint64_t unsignedOf(const QJsonObject &json, const char *key)
{
    return toUnsigned(json.value(QLatin1String(key)));
}

bool boolOf(const QJsonObject &json, const char *key, bool otherwise = false)
{
    return json.value(QLatin1String(key)).toBool(otherwise);
}

std::optional<double> limitOf(const QJsonObject &json, const char *key)
{
    const QJsonValue value = json.value(QLatin1String(key));
    return value.isNull() || value.isUndefined() ? std::nullopt : std::optional(toDouble(value));
}

QString shortNameOf(const QJsonObject &json)
{
    const QString name = textOf(json, "short_name");
    return name.isEmpty() ? textOf(json, "name") : name;
}

GoldenSignal signalOf(const QJsonObject &json)
{
    GoldenSignal signal;
    signal.name = textOf(json, "name");
    signal.shortName = shortNameOf(json);
    signal.start = static_cast<std::uint16_t>(unsignedOf(json, "start"));
    signal.length = static_cast<std::uint16_t>(unsignedOf(json, "length"));
    signal.isBigEndian = textOf(json, "byte_order") == QLatin1String("big_endian");
    signal.isSigned = boolOf(json, "is_signed");
    signal.isFloat = boolOf(json, "is_float");
    signal.scale = toDouble(json.value(QLatin1String("scale")));
    signal.offset = toDouble(json.value(QLatin1String("offset")));
    signal.minimum = limitOf(json, "min");
    signal.maximum = limitOf(json, "max");
    signal.unit = textOf(json, "unit");
    signal.isMultiplexer = boolOf(json, "is_multiplexer");
    for (const QJsonValue &id : json.value(QLatin1String("multiplexer_ids")).toArray())
        signal.multiplexerIds.push_back(id.toInt());
    signal.choices = unsignedOf(json, "choices");
    signal.fits = boolOf(json, "fits", true);
    return signal;
}

GoldenMessage messageOf(const QJsonObject &json)
{
    GoldenMessage message;
    message.id = static_cast<std::uint32_t>(unsignedOf(json, "id"));
    message.isExtended = boolOf(json, "is_extended");
    message.name = textOf(json, "name");
    message.shortName = shortNameOf(json);
    message.length = static_cast<std::uint32_t>(unsignedOf(json, "length"));
    message.isFd = boolOf(json, "is_fd");
    for (const QJsonValue &signal : json.value(QLatin1String("signals")).toArray())
        message.signals.push_back(signalOf(signal.toObject()));
    return message;
}

GoldenFrame frameOf(const QJsonObject &json)
{
    GoldenFrame frame;
    frame.id = static_cast<std::uint32_t>(unsignedOf(json, "id"));
    frame.isExtended = boolOf(json, "extended");
    frame.data = QByteArray::fromHex(textOf(json, "data").toLatin1());
    const QJsonObject values = json.value(QLatin1String("signals")).toObject();
    for (auto value = values.begin(); value != values.end(); ++value) {
        const QJsonObject numbers = value.value().toObject();
        frame.values[value.key()] = {unsignedOf(numbers, "raw"), toDouble(numbers.value(QLatin1String("physical")))};
    }
    return frame;
}

} // namespace

DbcGolden DbcGolden::fromJson(const QJsonObject &json)
{
    DbcGolden golden;
    const QJsonValue isLoadable = json.value(QLatin1String("expected_load"));
    if (isLoadable.isBool())
        golden.isLoadable = isLoadable.toBool();
    for (const QJsonValue &message : json.value(QLatin1String("messages")).toArray())
        golden.messages.push_back(messageOf(message.toObject()));
    for (const QJsonValue &frame : json.value(QLatin1String("frames")).toArray())
        golden.frames.push_back(frameOf(frame.toObject()));
    return golden;
}

} // namespace tzcorpus
