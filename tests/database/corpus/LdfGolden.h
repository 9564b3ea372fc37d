// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <map>
#include <vector>

namespace tzcorpus {

struct GoldenLdfSignal
{
    QString name;
    std::uint16_t offset = 0;
    std::uint16_t width = 0;
    std::vector<std::uint64_t> initial; ///< one number, or the bytes of an array
    bool isArray = false;
    QString publisher;
    QStringList subscribers; ///< in no particular order
    QString encoding;        ///< empty for none
};

struct GoldenLdfFrame
{
    QString name;
    std::uint32_t id = 0;
    std::uint32_t size = 0;
    QString publisher;
    std::vector<GoldenLdfSignal> signals;
};

/// One line of an encoding.
struct GoldenLdfValue
{
    QString type; ///< "logical", "physical" or another
    std::uint32_t value = 0;
    QString text;
    std::uint32_t minimum = 0;
    std::uint32_t maximum = 0;
    double scale = 0.0;
    double offset = 0.0;
    QString unit;
};

struct GoldenLdfGroup
{
    QString name;
    std::uint32_t id = 0;
    QStringList frames;
    QString collisionTable;
};

struct GoldenLdfEntry
{
    QString frame; ///< empty for a command
    double delayMs = 0.0;
};

struct GoldenLdfTable
{
    QString name;
    std::vector<GoldenLdfEntry> entries;
};

struct GoldenLdfPayload
{
    QString frame;
    QByteArray data;
    std::map<QString, std::uint64_t> raw; ///< by name of signal
};

/// The results for an LDF file.
struct LdfGolden
{
    QString protocolVersion;
    double baudrate = 0.0;
    QString channel;
    QString master;
    double timeBaseMs = 0.0;
    double jitterMs = 0.0;
    QStringList slaves;
    std::vector<GoldenLdfFrame> frames;
    std::vector<GoldenLdfFrame> diagnosticFrames;
    std::vector<GoldenLdfGroup> eventTriggeredFrames;
    std::vector<GoldenLdfGroup> sporadicFrames;
    std::map<QString, std::vector<GoldenLdfValue>> encodings; ///< by name
    std::vector<GoldenLdfTable> scheduleTables;
    std::vector<GoldenLdfPayload> payloads;

    static LdfGolden fromJson(const QJsonObject &json);
};

} // namespace tzcorpus
