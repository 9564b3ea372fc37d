// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

/// Little-endian numbers of the wire protocol, read and written byte by byte: no alignment is asked for and the
/// machine's own byte order plays no part. The caller has checked that the bytes are there.
namespace TzVciByteOrder {

template <typename T> T load(const std::uint8_t *bytes) noexcept
{
    static_assert(std::is_unsigned_v<T>, "signs are the reader's business");
    T value = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i)
        value = static_cast<T>(value | static_cast<T>(static_cast<T>(bytes[i]) << (8 * i)));
    return value;
}

template <typename T> void store(std::uint8_t *bytes, T value) noexcept
{
    static_assert(std::is_unsigned_v<T>, "signs are the writer's business");
    for (std::size_t i = 0; i < sizeof(T); ++i)
        bytes[i] = static_cast<std::uint8_t>(value >> (8 * i));
}

} // namespace TzVciByteOrder
