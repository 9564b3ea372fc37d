// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <deque>

namespace BLF {

/// What a record of a log is about. The numbers are part of the record.
namespace FrameType {
inline constexpr std::uint32_t data = 0;
inline constexpr std::uint32_t remote = 1;
inline constexpr std::uint32_t error = 2;
inline constexpr std::uint32_t fdError = 3;
inline constexpr std::uint32_t driverError = 4;
inline constexpr std::uint32_t overload = 5;
inline constexpr std::uint32_t setting = 6;
inline constexpr std::uint32_t systemVariable = 7;
inline constexpr std::uint32_t statistic = 8;
} // namespace FrameType

/// One object of a BLF log as a plain record: a CAN or CAN FD frame (ISO 11898-1), or an event beside the frames.
struct BlfFrame
{
    double time = 0;           ///< seconds since the measurement's start
    std::uint32_t channel = 0; ///< counted from 1; 0 where the object has none
    std::uint32_t id = 0;      ///< identifier without the flag of the extended format
    std::uint8_t dlc = 0;      ///< as it stands in the file: a code, not a length
    QByteArray data;           ///< up to 64 bytes; empty for remote frames
    bool isFd = false;
    bool isExtended = false;
    bool isBrs = false; ///< bit rate switch
    bool isEsi = false; ///< error state indicator
    bool isRtr = false;
    bool isWakeUp = false;
    bool isNerr = false; ///< single wire operation of a fault tolerant transceiver
    QString dir;         ///< "Tx", "Rx" or empty
    QString description; ///< of what is no frame
    std::uint32_t frameType = FrameType::data;
    std::uint16_t arbBitCount = 0;  ///< bits of the arbitration phase
    std::uint16_t bitCount = 0;     ///< bits of the whole frame
    std::uint32_t frameLength = 0;  ///< duration in ns
    std::uint32_t arbBitrate = 0;   ///< configuration word of the arbitration phase
    std::uint32_t dataBitrate = 0;  ///< configuration word of the data phase
    std::uint32_t brsOffset = 0;    ///< time of the switch to the data rate in ns
    std::uint32_t crcDelOffset = 0; ///< time of the switch back in ns
    std::uint32_t crc = 0;
};

/// Grows without ever moving what it holds, so that a long log needs no second copy of itself.
using BlfFrames = std::deque<BlfFrame>;

} // namespace BLF
