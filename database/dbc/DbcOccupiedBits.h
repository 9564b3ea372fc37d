// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace DbcOccupiedBits {

inline constexpr std::uint32_t allBits = 0x10000;

/// Calls @p visit with the number of each bit that a signal occupies, in the order in which the signal runs: from the
/// lowest bit of an Intel signal up, from the highest bit of a Motorola one down.
/// @param limit  numbers from here on are left out; whole bytes
template <typename Visitor>
void forEach(std::uint16_t startBit, std::uint16_t size, bool isBigEndian, Visitor visit, std::uint32_t limit = allBits)
{
    // With the bits of each byte counted the other way round, Motorola signals run upward too.
    constexpr std::uint32_t byteReversed = 7;
    const std::uint32_t turn = isBigEndian ? byteReversed : 0;
    const std::uint32_t first = startBit ^ turn;
    const std::uint32_t end = first + size < limit ? first + size : limit;
    for (std::uint32_t position = first; position < end; ++position)
        visit(static_cast<std::uint16_t>(position ^ turn));
}

} // namespace DbcOccupiedBits
