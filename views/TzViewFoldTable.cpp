// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/TzViewFoldTable.h"

#include <utility>

namespace {

constexpr std::size_t initialSlots = 1024;

// Keys differ in few bits, most of them low ones; the multiplication and the shift spread them over all slots.
std::size_t spread(std::uint64_t key) noexcept
{
    key ^= key >> 32;
    key *= 0x9E3779B97F4A7C15u; // 2^64 divided by the golden ratio
    return static_cast<std::size_t>(key ^ (key >> 29));
}

} // namespace

TzViewFoldTable::TzViewFoldTable()
    : m_slots(initialSlots)
{
}

const TzViewFoldEntry *TzViewFoldTable::find(std::uint64_t key) const noexcept
{
    const Slot &slot = m_slots[slotOf(key)];
    return slot.position == 0 ? nullptr : &m_entries[slot.position - 1];
}

TzViewFoldEntry &TzViewFoldTable::fold(std::uint64_t key, const TzVciMessage &message)
{
    std::size_t index = slotOf(key);
    if (m_slots[index].position != 0) {
        TzViewFoldEntry &entry = m_entries[m_slots[index].position - 1];
        entry.fold(message);
        return entry;
    }
    if (2 * (m_entries.size() + 1) > m_slots.size()) { // at most half full, so that searches stay short
        grow();
        index = slotOf(key);
    }
    TzViewFoldEntry &entry = m_entries.emplace_back();
    entry.message = message;
    m_slots[index] = {key, m_entries.size()};
    return entry;
}

void TzViewFoldTable::clear()
{
    m_entries.clear();
    m_slots = std::vector<Slot>(initialSlots); // gives back what a flood of identifiers took
}

// The slot that holds the key, or the free one where it belongs.
std::size_t TzViewFoldTable::slotOf(std::uint64_t key) const noexcept
{
    const std::size_t mask = m_slots.size() - 1;
    std::size_t index = spread(key) & mask;
    while (m_slots[index].position != 0 && m_slots[index].key != key)
        index = (index + 1) & mask;
    return index;
}

void TzViewFoldTable::grow()
{
    const std::vector<Slot> old = std::exchange(m_slots, std::vector<Slot>(m_slots.size() * 2));
    for (const Slot &slot : old) {
        if (slot.position != 0)
            m_slots[slotOf(slot.key)] = slot;
    }
}
