// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

/// Text put straight into memory. Each function writes at @p out, which must have the room, and returns the end.
namespace Common::LineDigits {

/// A byte's two hexadecimal digits and a blank, for each of the 256 bytes. Four bytes an entry, to be copied at once.
struct HexTable
{
    std::array<char, 256 * 4> pairs{};

    consteval explicit HexTable(std::string_view digits)
    {
        for (std::size_t i = 0; i < 256; ++i) {
            pairs[4 * i] = digits[i >> 4];
            pairs[4 * i + 1] = digits[i & 0x0F];
            pairs[4 * i + 2] = ' ';
        }
    }
};
inline constexpr HexTable lowerHex("0123456789abcdef");
inline constexpr HexTable upperHex("0123456789ABCDEF");

inline constexpr std::size_t maxIntegerLength = 20; ///< of 64 bits, sign included
inline constexpr std::size_t maxTimeLength = maxIntegerLength + 7;
/// What payload() takes at most: each byte's pair and its blank, and one byte of copying ahead.
inline constexpr std::size_t payloadLength(std::size_t bytes)
{
    return 3 * bytes + 1;
}

inline char *text(char *out, std::string_view characters) noexcept
{
    return out + characters.copy(out, characters.size());
}

inline char *character(char *out, char c) noexcept
{
    *out = c;
    return out + 1;
}

inline char *decimal(char *out, std::integral auto value) noexcept
{
    return std::to_chars(out, out + maxIntegerLength, value).ptr;
}

/// Two hexadecimal digits.
inline char *hexByte(char *out, std::uint8_t value, const HexTable &table) noexcept
{
    std::memcpy(out, &table.pairs[4 * std::size_t{value}], 2);
    return out + 2;
}

/// Hexadecimal digits of the table's case, at least @p width (1 to 8) of them, with zeroes in front.
inline char *hex(char *out, std::uint32_t value, int width, const HexTable &table) noexcept
{
    std::array<char, 8> digits; // all of them, of which the last are copied
    for (std::size_t i = 0; i < 4; ++i)
        hexByte(digits.data() + 2 * i, static_cast<std::uint8_t>(value >> (24 - 8 * i)), table);
    int length = 8;
    while (length > width && digits[static_cast<std::size_t>(8 - length)] == '0')
        --length;
    std::memcpy(out, digits.data() + 8 - length, static_cast<std::size_t>(length));
    return out + length;
}

/// Hexadecimal pairs with single blanks between them; nothing for no bytes. May touch one byte behind the end returned.
inline char *payload(char *out, std::span<const std::uint8_t> bytes, const HexTable &table) noexcept
{
    if (bytes.empty())
        return out;
    for (const std::uint8_t byte : bytes) {
        std::memcpy(out, &table.pairs[4 * std::size_t{byte}], 4);
        out += 3;
    }
    return out - 1;
}

/// Seconds, a dot and six digits. The sign stands with the seconds alone, so that there is none above -1 s.
inline char *seconds(char *out, std::int64_t microseconds) noexcept
{
    constexpr std::int64_t perSecond = 1'000'000;
    out = character(decimal(out, microseconds / perSecond), '.');
    auto rest = static_cast<std::int32_t>(microseconds % perSecond);
    rest = rest < 0 ? -rest : rest;
    for (std::int32_t unit = 100'000; unit > 0; unit /= 10)
        out = character(out, static_cast<char>('0' + rest / unit % 10));
    return out;
}

} // namespace Common::LineDigits
