// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "views/TzViewFoldEntry.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

/// Hash table from fold key to TzViewFoldEntry that iterates in the order in which the keys first appeared.
///
/// Entries stay where they are until clear(), so references to them stay valid. One thread at a time.
class TzViewFoldTable
{
public:
    TzViewFoldTable();

    /// The entry of @p key, or null.
    const TzViewFoldEntry *find(std::uint64_t key) const noexcept;
    /// Folds @p message into the entry of @p key, which is made if it is missing.
    TzViewFoldEntry &fold(std::uint64_t key, const TzVciMessage &message);
    void clear();

    std::size_t size() const noexcept { return m_entries.size(); }
    auto begin() noexcept { return m_entries.begin(); }
    auto end() noexcept { return m_entries.end(); }

private:
    struct Slot
    {
        std::uint64_t key = 0;
        std::size_t position = 0; // 1 + index into m_entries; 0: free
    };

    std::size_t slotOf(std::uint64_t key) const noexcept;
    void grow();

    std::vector<Slot> m_slots; // open addressing; the size is a power of two
    std::deque<TzViewFoldEntry> m_entries;
};
