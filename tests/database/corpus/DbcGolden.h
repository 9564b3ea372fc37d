// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace tzcorpus {

/// A signal as the independent tools see it.
struct GoldenSignal
{
    QString name;      ///< long name, where the file has one
    QString shortName; ///< on the signal's line; differs from name only where there is a long one
    std::uint16_t start = 0;
    std::uint16_t length = 0;
    bool isBigEndian = false;
    bool isSigned = false;
    bool isFloat = false;
    double scale = 1.0;
    double offset = 0.0;
    std::optional<double> minimum; ///< nothing for [0|0]
    std::optional<double> maximum;
    QString unit;
    bool isMultiplexer = false;
    std::vector<std::int32_t> multiplexerIds;
    std::size_t choices = 0; ///< number of value descriptions
    bool fits = true;        ///< lies within the payload
};

struct GoldenMessage
{
    std::uint32_t id = 0;
    bool isExtended = false;
    QString name;
    QString shortName;
    std::uint32_t length = 0;
    bool isFd = false;
    std::vector<GoldenSignal> signals;
};

/// A payload with what every signal reads in it.
struct GoldenFrame
{
    struct Value
    {
        std::uint64_t raw = 0;
        double physical = 0.0;
    };
    std::uint32_t id = 0;
    bool isExtended = false;
    QByteArray data;
    std::map<QString, Value> values; ///< by the signal's name in GoldenSignal
};

/// The results for a DBC file.
struct DbcGolden
{
    std::optional<bool> isLoadable; ///< nothing where that is left open
    std::vector<GoldenMessage> messages;
    std::vector<GoldenFrame> frames;

    static DbcGolden fromJson(const QJsonObject &json);
};

} // namespace tzcorpus
