// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/blf/BlfFrame.h"
#include "logging/blf/BlfObjects.h"

#include <QString>

#include <cstdint>
#include <string_view>

namespace BLF {

/// Text of the FrameType numbers, "Unknown" for others.
std::string_view frameTypeText(std::uint32_t frameType) noexcept;

/// A text of the file up to its first zero byte: UTF-8 where it is valid, else Latin-1. Control characters below 0x20
/// become blanks, and so do the other ends of lines (U+0085, U+2028, U+2029): no text breaks the line it stands in.
QString fileText(std::string_view bytes);

// The descriptions of what is no frame.

QString describe(const CanStatistic &object);
QString describe(const CanDriverError &object);
QString describe(const SystemVariable &object);
/// @param record  what is known of the object already: direction, identifier, flags and payload
QString describe(const CanErrorFrameExt &object, const BlfFrame &record);
QString describe(const CanFdErrorFrame64 &object, const BlfFrame &record);
QString describeBitTiming(const CanSettingChanged &object);

/// The text that reports a record as it is read.
QString reportText(const BlfFrame &record);
/// Whether that report is about something that went wrong on the bus.
bool isErrorReport(const BlfFrame &record) noexcept;

} // namespace BLF
