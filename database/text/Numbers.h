// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringView>

#include <charconv>
#include <cstdint>
#include <limits>
#include <optional>
#include <type_traits>

/// Numbers of database files, read in the C locale whatever the user's locale is. Blanks around a number and a sign
/// before it are taken, anything else that is not part of it is not.
namespace Common::Numbers {

/// @return nothing where the text is no number, or one that is not finite or too large for a double
std::optional<double> readDouble(QStringView text);

/// The double, 0 where there is none.
inline double doubleOrZero(QStringView text)
{
    return readDouble(text).value_or(0.0);
}

namespace detail {
/// Decimal digits with an optional sign; nothing where the magnitude is beyond 64 bits.
struct SignedMagnitude
{
    bool isNegative = false;
    std::uint64_t magnitude = 0;
};
std::optional<SignedMagnitude> readMagnitude(QStringView text, int base);
} // namespace detail

/// @return nothing where the text is no whole number of that base (8, 10 or 16, for 16 with or without "0x"), or one
///         beyond the type
template <typename Integer> std::optional<Integer> readInteger(QStringView text, int base = 10)
{
    static_assert(std::is_integral_v<Integer>);
    const auto number = detail::readMagnitude(text, base);
    if (!number)
        return std::nullopt;
    constexpr auto largest = static_cast<std::uint64_t>(std::numeric_limits<Integer>::max());
    if (!number->isNegative)
        return number->magnitude <= largest ? std::optional(static_cast<Integer>(number->magnitude)) : std::nullopt;
    if constexpr (std::is_signed_v<Integer>) {
        if (number->magnitude <= largest + 1)
            return static_cast<Integer>(std::uint64_t{0} - number->magnitude);
    }
    return std::nullopt;
}

/// The integer, 0 where there is none.
template <typename Integer> Integer integerOrZero(QStringView text, int base = 10)
{
    return readInteger<Integer>(text, base).value_or(Integer{0});
}

} // namespace Common::Numbers
