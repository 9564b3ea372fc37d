// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <type_traits>

/// Values of TzVciLinDataType::linDirection. Bit 0x10 set means that the box wrote the response.
namespace TzVciLinDirection {
inline constexpr std::uint8_t masterRead = 0;
inline constexpr std::uint8_t slaveRead = 1;
inline constexpr std::uint8_t masterWrite = 16;
inline constexpr std::uint8_t slaveWrite = 17;
inline constexpr std::uint8_t writeBit = 0x10;
} // namespace TzVciLinDirection

/// Values of TzVciLinDataType::linAction, for transmit only.
namespace TzVciLinAction {
inline constexpr std::uint8_t headerAndResponse = 1;
inline constexpr std::uint8_t headerOnly = 2;
inline constexpr std::uint8_t responseOnly = 3;
inline constexpr std::uint8_t headerAndResponse4 = 4; ///< second code for the same action
inline constexpr std::uint8_t clearResponse = 12;
} // namespace TzVciLinAction

/// One LIN frame (ISO 17987), laid out as on the wire of the VCI protocol and copied by value.
struct TzVciLinDataType
{
    std::uint8_t linId = 0;          ///< frame identifier, 0 to 0x3F
    std::uint8_t dataLength = 0;     ///< bytes of payload as sent by the device; readers stop at 8
    std::uint8_t checksumType = 0;   ///< 0 classic, 1 enhanced
    std::uint8_t linAction = 0;      ///< TzVciLinAction, for transmit only
    std::uint8_t protectedId = 0;    ///< PID as seen on the bus
    std::uint8_t checksum = 0;       ///< checksum byte as seen on the bus
    std::uint8_t linDirection = 0;   ///< TzVciLinDirection
    std::uint8_t reserved = 0;       ///< zero
    std::uint32_t timestampLow = 0;  ///< device time in 0.1 microsecond, low half
    std::uint32_t timestampHigh = 0; ///< device time, high half
    std::array<std::uint8_t, 8> data{};

    /// Bytes of data that may be read: dataLength, at most 8.
    std::uint8_t payloadLength() const noexcept { return dataLength > 8 ? std::uint8_t{8} : dataLength; }
};
static_assert(std::is_trivially_copyable_v<TzVciLinDataType>, "crosses threads and the wire byte for byte");
static_assert(sizeof(TzVciLinDataType) == 24 && alignof(TzVciLinDataType) == 4, "the wire protocol fixes the layout");
