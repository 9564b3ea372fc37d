// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/dbc/DbcSignal.h"

#include <cstdint>

/// The raw values that users of DBC files take a signal to have room for.
struct DbcRawRange
{
    std::int64_t smallest = 0;
    std::int64_t largest = 0;
};

/// Shift counts wrap at 64, which leaves an unsigned 64-bit signal nothing but 0: users rely on the range that has
/// always been shown. Any size gives a defined result.
inline DbcRawRange rawRangeOf(const DbcSignal &signal) noexcept
{
    constexpr unsigned shiftMask = 63;
    if (!signal.isSigned)
        return {0, static_cast<std::int64_t>((std::uint64_t{1} << (signal.size & shiftMask)) - 1)};
    const std::uint64_t power = std::uint64_t{1} << ((signal.size - 1U) & shiftMask);
    return {static_cast<std::int64_t>(std::uint64_t{0} - power), static_cast<std::int64_t>(power - 1)};
}
