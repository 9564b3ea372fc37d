// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/blf/BlfBaseHeader.h"
#include "logging/blf/BlfWindow.h"

#include <limits>
#include <optional>

namespace BLF {

/// Bytes between objects that are no object and no padding.
struct BlfGap
{
    std::uint64_t position = 0; ///< as the window counts
    std::uint64_t length = 0;
    std::uint32_t cutObjectSize = 0; ///< where it begins with an object that the end cuts: what that wants; otherwise 0
    std::uint32_t suspectSize = 0;   ///< of a large object directly in front of it, which may be wrong; otherwise 0
    std::uint32_t suspectType = 0;   ///< of the same
};

/// Finds objects in bytes that come piece by piece: behind the padding of the one before, or beyond damage.
class BlfObjectSearch
{
public:
    enum class Level
    {
        file,  ///< an object is whole, but a container may be cut
        stream ///< inside containers
    };
    static constexpr std::uint64_t unknownEnd = std::numeric_limits<std::uint64_t>::max();
    static constexpr std::uint32_t largestObject = 16 * 1024 * 1024; ///< bytes; greater claims are damage
    static constexpr std::uint32_t largestFixedForm = 512;           ///< the same for types without texts
    static constexpr std::uint32_t containerHeaderSize = 32;         ///< with the fields in front of the payload

    explicit BlfObjectSearch(Level level) noexcept
        : m_level(level)
    {
    }

    /// Takes from the window what stands before the next object.
    /// @param end  position behind the last byte; beyond it no object reaches. unknownEnd while more may come
    /// @return true where the window begins with the sound base header of an object; false where more bytes are needed,
    /// or the window has taken in the last byte and is empty now
    bool find(BlfWindow &window, std::uint64_t end);
    /// What the last find() passed over, to be taken whenever that found an object or came to the end.
    std::optional<BlfGap> takeGap() noexcept;

private:
    bool isObject(const BaseHeader &header, std::uint64_t position, std::uint64_t end) const noexcept;
    bool findHere(BlfWindow &window, std::uint64_t end);
    bool findNear(BlfWindow &window, std::uint64_t end) const noexcept;
    void beginGap(BlfWindow &window) noexcept;
    bool findBehindGap(BlfWindow &window, std::uint64_t end);
    void passOver(BlfWindow &window, std::size_t count) noexcept;

    const Level m_level;
    bool m_isInGap = false;
    bool m_gapHasData = false; // something else than zeros
    BlfGap m_gap;
    BaseHeader m_large; // the last object found, while that is a large one
    std::uint64_t m_largeEnd = 0;
};

} // namespace BLF
