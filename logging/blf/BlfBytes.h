// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstring>
#include <span>

namespace BLF {

static_assert(std::endian::native == std::endian::little, "numbers of a log are copied as they stand");

/// A number of the log at any byte; what does not lie wholly in @p bytes reads 0.
template <std::unsigned_integral Number> Number numberAt(std::span<const std::byte> bytes, std::size_t offset) noexcept
{
    Number number = 0;
    if (offset <= bytes.size() && bytes.size() - offset >= sizeof(Number))
        std::memcpy(&number, bytes.data() + offset, sizeof(Number));
    return number;
}

} // namespace BLF
