// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace BLF {

struct BlfFrame;

/// How much the records of a log may hold. A small file can unpack to texts that no machine has the memory for, and the
/// system would end the program rather than refuse it that memory.
class BlfMemoryBudget
{
public:
    explicit BlfMemoryBudget(std::uint64_t bytes) noexcept
        : m_left(bytes)
    {
    }

    /// Half of the physical memory; no bound where that is not known.
    static std::uint64_t ofThisMachine() noexcept;
    /// What a record holds, by estimate: itself, its payload and its description.
    static std::uint64_t costOf(const BlfFrame &record) noexcept;

    /// @return false where the record would hold more than is left, and from then on
    bool take(const BlfFrame &record) noexcept;
    bool isUsedUp() const noexcept { return m_isUsedUp; } ///< whether a record was refused

private:
    std::uint64_t m_left;
    bool m_isUsedUp = false;
};

} // namespace BLF
