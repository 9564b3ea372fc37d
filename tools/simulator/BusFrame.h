// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <array>
#include <compare>
#include <cstdint>
#include <optional>
#include <span>

namespace tzsim {

/// Bits of CanFrame::flags.
namespace CanFlag {
inline constexpr std::uint8_t extended = 0x01;
inline constexpr std::uint8_t remote = 0x02;
inline constexpr std::uint8_t bitRateSwitch = 0x08;
inline constexpr std::uint8_t fd = 0x40;
} // namespace CanFlag

/// Values of CanFrame::type.
namespace CanType {
inline constexpr std::uint8_t transmitted = 1;
inline constexpr std::uint8_t received = 2;
inline constexpr std::uint8_t error = 4;
inline constexpr std::uint8_t error2 = 8;
} // namespace CanType

/// One frame on a simulated CAN bus.
struct CanFrame
{
    std::uint32_t id = 0;
    std::uint8_t length = 0;               ///< bytes of data, at most 64
    std::uint8_t flags = 0;                ///< or-ed CanFlag values
    std::uint8_t type = CanType::received; ///< error classes pass unchanged, the rest is set on delivery
    std::array<std::uint8_t, 64> data{};

    static CanFrame make(std::uint32_t id, std::span<const std::uint8_t> data, std::uint8_t flags = 0)
    {
        CanFrame frame;
        frame.id = id;
        frame.length = static_cast<std::uint8_t>(std::min<std::size_t>(data.size(), frame.data.size()));
        frame.flags = flags;
        std::copy_n(data.begin(), frame.length, frame.data.begin());
        return frame;
    }
    /// An error frame: data holds the code, little-endian.
    static CanFrame makeError(std::uint32_t code, std::uint8_t type = CanType::error)
    {
        CanFrame frame;
        frame.length = 4;
        frame.type = type;
        for (unsigned i = 0; i < 4; ++i)
            frame.data[i] = static_cast<std::uint8_t>(code >> (8 * i));
        return frame;
    }
    bool isError() const { return type == CanType::error || type == CanType::error2; }
    bool operator==(const CanFrame &) const = default;
};

/// Values of LinFrame::checksumType.
namespace LinChecksum {
inline constexpr std::uint8_t classic = 0;
inline constexpr std::uint8_t enhanced = 1;
} // namespace LinChecksum

/// One frame on a simulated LIN bus, or the response that a node keeps for an identifier.
struct LinFrame
{
    std::uint8_t id = 0;     ///< 0 to 0x3F
    std::uint8_t length = 0; ///< bytes of data, at most 8; 0 for a header that nobody answered
    std::uint8_t checksumType = LinChecksum::enhanced;
    std::array<std::uint8_t, 8> data{};
    std::optional<std::uint8_t> protectedId; ///< computed when empty; set to put a wrong parity on the bus
    std::optional<std::uint8_t> checksum;    ///< computed when empty; set to put a wrong checksum on the bus

    static LinFrame make(std::uint8_t id, std::span<const std::uint8_t> data,
                         std::uint8_t checksumType = LinChecksum::enhanced)
    {
        LinFrame frame;
        frame.id = id;
        frame.length = static_cast<std::uint8_t>(std::min<std::size_t>(data.size(), frame.data.size()));
        frame.checksumType = checksumType;
        std::copy_n(data.begin(), frame.length, frame.data.begin());
        return frame;
    }
    bool operator==(const LinFrame &) const = default;
};

enum class Family : std::uint8_t
{
    can = 1,
    lin = 5
}; // the protocol ids of the wire

/// One channel of one box.
struct ChannelRef
{
    int box = 0;
    Family family = Family::can;
    int channel = 0; ///< counted from 0 in its family
    auto operator<=>(const ChannelRef &) const = default;
};

} // namespace tzsim
