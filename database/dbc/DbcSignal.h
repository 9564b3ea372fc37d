// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/dbc/DbcAttribute.h"
#include "database/dbc/DbcValueTexts.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <vector>

/// How the bits of a signal's raw value are to be read.
namespace DbcValueType {
inline constexpr std::uint8_t integer = 0;
inline constexpr std::uint8_t float32 = 1;
inline constexpr std::uint8_t float64 = 2;
} // namespace DbcValueType

/// One `SG_` line with what later statements say about it. A copyable value.
struct DbcSignal
{
    QString name;
    std::uint8_t valueType = DbcValueType::integer; ///< see isFloatSignal()
    bool isMultiplexor = false;
    bool isMultiplexed = false;
    std::int32_t multiplexValue = -1; ///< -1: none
    std::uint16_t startBit = 0;       ///< as written: lowest bit of an Intel signal, highest bit of a Motorola one
    std::uint16_t size = 0;           ///< in bits
    bool isBigEndian = false;
    bool isSigned = false;
    double factor = 1.0;
    double offset = 0.0;
    double minimum = 0.0;    ///< physical
    double maximum = 0.0;    ///< physical
    std::uint64_t value = 0; ///< current raw value, for float types the float's bit pattern
    QString unit;
    QStringList receivers;           ///< as written, the pseudo node included
    DbcValueTexts valueDescriptions; ///< of raw values
    QString comment;
    std::vector<DbcAttributeValue> attributes;
};
