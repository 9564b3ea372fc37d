// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMetaType>

#include <array>
#include <cstdint>
#include <type_traits>

/// Bits of TzVciCanDataType::flags.
namespace TzVciCanFlag {
inline constexpr std::uint8_t extendedId = 0x01;
inline constexpr std::uint8_t remote = 0x02;
inline constexpr std::uint8_t bitRateSwitch = 0x08; ///< only together with fd
inline constexpr std::uint8_t fd = 0x40;
inline constexpr std::uint8_t formatMask = fd | bitRateSwitch;
} // namespace TzVciCanFlag

/// Values of TzVciCanDataType::frameType.
namespace TzVciCanFrameType {
inline constexpr std::uint8_t transmitted = 1; ///< the device's echo of a frame that it sent
inline constexpr std::uint8_t received = 2;
inline constexpr std::uint8_t error = 4;  ///< data holds a little-endian error code, not bus data
inline constexpr std::uint8_t error2 = 8; ///< a second error class
} // namespace TzVciCanFrameType

/// One CAN (ISO 11898-1) or CAN FD frame, laid out as on the wire of the VCI protocol and copied by value.
/// dataLength is a byte count (0 to 64), not a DLC code.
struct TzVciCanDataType
{
    std::uint32_t canId = 0;         ///< 11 or 29 bits, without flag bits
    std::uint8_t dataLength = 0;     ///< bytes of payload as sent by the device; readers stop at 64
    std::uint8_t flags = 0;          ///< or-ed TzVciCanFlag values
    std::uint8_t reserved = 0;       ///< zero on transmit
    std::uint8_t frameType = 0;      ///< direction or error class, TzVciCanFrameType
    std::uint32_t timestampLow = 0;  ///< device time in 0.1 microsecond, low half
    std::uint32_t timestampHigh = 0; ///< device time, high half
    std::array<std::uint8_t, 64> data{}; ///< bytes past dataLength are zero

    void setExtendedId(bool on) noexcept { setBits(TzVciCanFlag::extendedId, on ? TzVciCanFlag::extendedId : 0); }
    void setRemote(bool on) noexcept { setBits(TzVciCanFlag::remote, on ? TzVciCanFlag::remote : 0); }
    /// @param format  0 for CAN, 0x40 for CAN FD, 0x48 for CAN FD with bit rate switch; other bits are not taken
    void setFormat(std::uint8_t format) noexcept { setBits(TzVciCanFlag::formatMask, format); }
    std::uint8_t format() const noexcept { return flags & TzVciCanFlag::formatMask; }
    /// Bytes of data that may be read: dataLength, at most 64.
    std::uint8_t payloadLength() const noexcept { return dataLength > 64 ? std::uint8_t{64} : dataLength; }

private:
    void setBits(std::uint8_t mask, std::uint8_t value) noexcept
    {
        flags = static_cast<std::uint8_t>((flags & ~mask) | (value & mask));
    }
};
static_assert(std::is_trivially_copyable_v<TzVciCanDataType>, "crosses threads and the wire byte for byte");
static_assert(sizeof(TzVciCanDataType) == 80 && alignof(TzVciCanDataType) == 4, "the wire protocol fixes the layout");
static_assert(std::is_standard_layout_v<TzVciCanDataType>);

Q_DECLARE_METATYPE(TzVciCanDataType)
