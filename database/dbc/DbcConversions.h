// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/dbc/DbcMessage.h"
#include "database/dbc/DbcSignal.h"

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>

// Conversions between payload bytes, raw values and what people read. Free functions on plain records: any thread may
// call them on records of its own. None throws but where memory ends. Whatever stands in a record, and whatever number
// comes in, the result is defined.

/// True where the raw value is the bit pattern of a float32 or a float64.
inline bool isFloatSignal(const DbcSignal &signal) noexcept
{
    return signal.valueType == DbcValueType::float32 || signal.valueType == DbcValueType::float64;
}

/// The number that the signal's raw value stands for, scaled; floats as they are. Allocates nothing.
double getSignalPhysicalValue(const DbcSignal &signal) noexcept;

/// The raw value nearest to @p physical; the inverse of getSignalPhysicalValue(). A factor of 0 counts as 1.
/// NaN gives 0 for integers, and what does not fit 64 bits the value nearest to it. Signed integers come cut to the
/// signal's size, unsigned ones uncut, negative ones in two's complement: see isRawInRange().
std::uint64_t physicalToRawValue(double physical, const DbcSignal &signal) noexcept;

/// Sets the signal's raw value from a payload of @p length bytes; bits beyond them, or beyond byte 254, read as 0. No
/// data and a size outside 1 to 64 read as 0. Allocates nothing.
void decodeSignal(const std::uint8_t *data, std::size_t length, DbcSignal &signal) noexcept;

/// Sets the raw value of every signal, multiplexed or not. Allocates nothing.
/// @return 0, or -1 (nothing changed) without data or with fewer bytes than the message's size
int decodeMessage(const std::uint8_t *data, std::size_t length, DbcMessage &message) noexcept;

/// Payload of DbcMessage::size bytes from the raw values of all signals; where some share bits, the later one wins.
/// Empty where a signal does not lie wholly within the payload or has a size outside 1 to 64.
QByteArray encodeMessage(const DbcMessage &message);

/// "raw - description" where the raw value has one, otherwise the physical value with up to 10 digits, without unit.
QString formatSignalValue(const DbcSignal &signal);

/// Whether @p physical lies within the signal's limits, both included; NaN does not.
bool isPhysicalInRange(double physical, const DbcSignal &signal) noexcept;

/// Whether the signal's bits can hold @p raw, a negative number being in two's complement. False for a size outside 1
/// to 64.
bool isRawInRange(std::uint64_t raw, const DbcSignal &signal) noexcept;
