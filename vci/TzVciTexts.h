// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>

// Words that the user reads for fields of the frame records. Pure; any thread.

QString canFrameFormatText(std::uint8_t flags);         ///< "CAN", "CANFD", "CANFDBRS"
QString canDirectionText(std::uint8_t frameType);       ///< "Tx", "Rx", "Err"
QString canIdTypeText(std::uint8_t flags);              ///< "Extend", "Standard"
QString canFrameKindText(std::uint8_t flags);           ///< "Remote", "Data"
QString linChecksumTypeText(std::uint8_t checksumType); ///< "Enhanced", "Standard"
QString linDirectionText(std::uint8_t linDirection);    ///< "Rx", "Tx"
QString linFrameTypeText(std::uint8_t linDirection);    ///< "Master Read", "Slave Read", "Master Write", "Slave Write"
QString linActionText(std::uint8_t linAction);          ///< "Head&Resp", "Header", "Response", "Clear", "Unknown"

/// Text of the error code that an error frame carries in its data.
/// @param data        may be null
/// @param dataLength  anything but 4 reads "Unknown error"
QString canErrorText(const std::uint8_t *data, std::uint8_t dataLength);
