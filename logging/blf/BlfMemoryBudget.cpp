// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/blf/BlfMemoryBudget.h"

#include "logging/blf/BlfFrame.h"

#include <limits>

#include <unistd.h>

namespace BLF {

std::uint64_t BlfMemoryBudget::ofThisMachine() noexcept
{
    const long pages = ::sysconf(_SC_PHYS_PAGES);
    const long pageSize = ::sysconf(_SC_PAGESIZE);
    if (pages <= 0 || pageSize <= 0)
        return std::numeric_limits<std::uint64_t>::max();
    return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageSize) / 2;
}

std::uint64_t BlfMemoryBudget::costOf(const BlfFrame &record) noexcept
{
    const auto units = static_cast<std::uint64_t>(record.description.size());
    return sizeof(record) + static_cast<std::uint64_t>(record.data.size()) + units * sizeof(QChar);
}

bool BlfMemoryBudget::take(const BlfFrame &record) noexcept
{
    const std::uint64_t cost = costOf(record);
    m_isUsedUp = m_isUsedUp || cost > m_left;
    if (!m_isUsedUp)
        m_left -= cost;
    return !m_isUsedUp;
}

} // namespace BLF
