// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/blf/BlfBytes.h"

#include <cstdint>
#include <string_view>

namespace BLF {

/// What every object begins with, at the file's level and inside containers.
struct BaseHeader
{
    static constexpr std::size_t size = 16;
    static constexpr std::string_view signature = "LOBJ";
    static constexpr std::uint32_t signatureNumber = 0x4A424F4C; ///< the same, as it is read
    static constexpr std::size_t sizeWithTime = 32;              ///< from this headerSize on an object has a time stamp

    std::uint32_t signatureWord = 0;
    std::uint16_t headerSize = 0;
    std::uint16_t headerVersion = 0;
    std::uint32_t objectSize = 0;
    std::uint32_t objectType = 0;

    /// @param bytes  at least size of them
    static BaseHeader at(std::span<const std::byte> bytes) noexcept
    {
        BaseHeader header;
        static_assert(sizeof(header) == size);
        std::memcpy(&header, bytes.data(), size);
        return header;
    }
    bool hasSignature() const noexcept { return signatureWord == signatureNumber; }
};

} // namespace BLF
