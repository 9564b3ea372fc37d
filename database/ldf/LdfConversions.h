// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/ldf/LdfFrame.h"
#include "database/ldf/LdfSignal.h"

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <vector>

// Conversions between payload bytes, raw values and what people read. Free functions on plain records: any thread may
// call them on records of its own. None throws but where memory ends. LIN signals are little-endian whatever a file
// says.

/// Payload of LdfFrame::size bytes from the signals' values. Empty when the size is 0 or a signal does not fit.
QByteArray encodeFrame(const LdfFrame &frame);
/// The same into a buffer of @p length bytes; bytes past the frame's size stay untouched.
/// @return 0, or -1 (nothing written) without a buffer, with a length of 0 or below the frame's size, or where a signal
///         does not fit
int encodeFrame(const LdfFrame &frame, std::uint8_t *buffer, std::size_t length);

/// Result of decodeFrame() where nothing could be decoded.
inline constexpr std::uint32_t ldfDecodeFailed = 0xFFFF'FFFFU;
/// Sets the raw value of every signal of @p frame from a payload. Allocates nothing.
/// @return 0, or ldfDecodeFailed (nothing changed) without data, with a length of 0 or below the frame's size
std::uint32_t decodeFrame(const std::uint8_t *data, std::size_t length, LdfFrame &frame);

/// Time between two transmissions in ms, as far as the schedule tables tell; 100.0 when they do not, 0.0 for a sporadic
/// frame.
double getFramePeriod(const LdfFrame &frame);

/// Raw value of an initial value as written in a file: a decimal number, or a byte array in braces, first byte lowest.
/// What cannot be read counts as 0.
std::uint64_t rawInitialValue(const QString &initialValue, std::uint16_t size);

/// "key - text" for a logical value, "physical unit" in a physical range, the raw value in decimal without an encoding.
QString formatSignalValue(const LdfSignal &signal);

struct LdfSignalRange
{
    double minimum = 0.0;
    double maximum = 0.0;
};
/// 0 to the largest raw value, or the limits of double for a signal with physical ranges. A size of 64 wraps to 0.
LdfSignalRange getSignalRange(const LdfSignal &signal);
/// Unit of the physical range that the signal's value falls to; empty without one.
QString getSignalUnit(const LdfSignal &signal);
/// @param value  physical for a signal with physical ranges, raw otherwise
bool isSignalValueValid(double value, const LdfSignal &signal);

enum class LdfSignalOrder
{
    startBit = 0,
    name = 1,
    size = 2
};
/// The frame's signals in that order; equal ones by name. The pointers live as long as the frame's map of signals.
std::vector<const LdfSignal *> getSortedSignals(const LdfFrame &frame, LdfSignalOrder order = LdfSignalOrder::startBit);
std::vector<LdfSignal *> getSortedSignals(LdfFrame &frame, LdfSignalOrder order = LdfSignalOrder::startBit);
