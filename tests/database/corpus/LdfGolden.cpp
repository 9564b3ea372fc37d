// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/database/corpus/LdfGolden.h"

#include "tests/database/corpus/Corpus.h"

#include <QJsonArray>

namespace tzcorpus {

namespace {

QString textOf(const QJsonObject &json, const char *key)
{
    return json.value(QLatin1String(key)).toString();
}

std::uint32_t unsignedOf(const QJsonObject &json, const char *key)
{
    return static_cast<std::uint32_t>(toUnsigned(json.value(QLatin1String(key))));
}

double doubleOf(const QJsonObject &json, const char *key)
{
    return toDouble(json.value(QLatin1String(key)));
}

QStringList textsOf(const QJsonObject &json, const char *key)
{
    QStringList texts;
    for (const QJsonValue &text : json.value(QLatin1String(key)).toArray())
        texts += text.toString();
    return texts;
}

template <typename Record, typename Read>
std::vector<Record> listOf(const QJsonObject &json, const char *key, Read read)
{
    std::vector<Record> records;
    for (const QJsonValue &record : json.value(QLatin1String(key)).toArray())
        records.push_back(read(record.toObject()));
    return records;
}

GoldenLdfSignal signalOf(const QJsonObject &json)
{
    GoldenLdfSignal signal;
    signal.name = textOf(json, "name");
    signal.offset = static_cast<std::uint16_t>(unsignedOf(json, "offset"));
    signal.width = static_cast<std::uint16_t>(unsignedOf(json, "width"));
    const QJsonValue initial = json.value(QLatin1String("init"));
    signal.isArray = initial.isArray();
    for (const QJsonValue &byte : signal.isArray ? initial.toArray() : QJsonArray{initial})
        signal.initial.push_back(toUnsigned(byte));
    signal.publisher = textOf(json, "publisher");
    signal.subscribers = textsOf(json, "subscribers");
    signal.encoding = textOf(json, "encoding");
    return signal;
}

GoldenLdfFrame frameOf(const QJsonObject &json)
{
    return {textOf(json, "name"), unsignedOf(json, "id"), unsignedOf(json, "size"), textOf(json, "publisher"),
            listOf<GoldenLdfSignal>(json, "signals", &signalOf)};
}

GoldenLdfValue valueOf(const QJsonObject &json)
{
    return {textOf(json, "type"),    unsignedOf(json, "value"), textOf(json, "text"),     unsignedOf(json, "min"),
            unsignedOf(json, "max"), doubleOf(json, "scale"),   doubleOf(json, "offset"), textOf(json, "unit")};
}

GoldenLdfGroup groupOf(const QJsonObject &json)
{
    return {textOf(json, "name"), unsignedOf(json, "id"), textsOf(json, "frames"), textOf(json, "collision_table")};
}

GoldenLdfEntry entryOf(const QJsonObject &json)
{
    const QString type = textOf(json, "type");
    const QString frame = type == QLatin1String("MasterRequest")   ? QStringLiteral("MasterReq")
                          : type == QLatin1String("SlaveResponse") ? QStringLiteral("SlaveResp")
                          : type == QLatin1String("LinFrame")      ? textOf(json, "frame")
                                                                   : QString();
    return {frame, doubleOf(json, "delay_ms")};
}

GoldenLdfTable tableOf(const QJsonObject &json)
{
    return {textOf(json, "name"), listOf<GoldenLdfEntry>(json, "entries", &entryOf)};
}

GoldenLdfPayload payloadOf(const QJsonObject &json)
{
    GoldenLdfPayload payload{textOf(json, "frame"), QByteArray::fromHex(textOf(json, "data").toLatin1()), {}};
    const QJsonObject raw = json.value(QLatin1String("raw")).toObject();
    for (auto value = raw.begin(); value != raw.end(); ++value)
        payload.raw[value.key()] = toUnsigned(value.value());
    return payload;
}

} // namespace

LdfGolden LdfGolden::fromJson(const QJsonObject &json)
{
    LdfGolden golden;
    golden.protocolVersion = textOf(json, "protocol_version");
    golden.baudrate = doubleOf(json, "baudrate");
    golden.channel = textOf(json, "channel");
    const QJsonObject master = json.value(QLatin1String("master")).toObject();
    golden.master = textOf(master, "name");
    golden.timeBaseMs = doubleOf(master, "timebase_ms");
    golden.jitterMs = doubleOf(master, "jitter_ms");
    golden.slaves = textsOf(json, "slaves");
    golden.frames = listOf<GoldenLdfFrame>(json, "frames", &frameOf);
    golden.diagnosticFrames = listOf<GoldenLdfFrame>(json, "diagnostic_frames", &frameOf);
    golden.eventTriggeredFrames = listOf<GoldenLdfGroup>(json, "event_triggered_frames", &groupOf);
    golden.sporadicFrames = listOf<GoldenLdfGroup>(json, "sporadic_frames", &groupOf);
    for (const QJsonValue &encoding : json.value(QLatin1String("encodings")).toArray())
        golden.encodings[textOf(encoding.toObject(), "name")] =
            listOf<GoldenLdfValue>(encoding.toObject(), "values", &valueOf);
    golden.scheduleTables = listOf<GoldenLdfTable>(json, "schedule_tables", &tableOf);
    golden.payloads = listOf<GoldenLdfPayload>(json, "payloads", &payloadOf);
    return golden;
}

} // namespace tzcorpus
