// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

/// The numbers by which DBC files name messages.
namespace DbcIdentifier {

inline constexpr std::uint32_t extendedBit = 0x80000000; ///< marks an extended identifier; no part of it
inline constexpr std::uint32_t largest = 0x1FFFFFFF;
inline constexpr std::uint32_t mask = largest;

} // namespace DbcIdentifier
