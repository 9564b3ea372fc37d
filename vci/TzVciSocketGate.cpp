// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciSocketGate.h"

#include <algorithm>
#include <utility>

TzVciSocketGate::Use::Use(Use &&other) noexcept
    : m_slot(std::exchange(other.m_slot, nullptr))
{
}

TzVciSocketGate::Use &TzVciSocketGate::Use::operator=(Use &&other) noexcept
{
    if (this != &other)
        leave(std::exchange(m_slot, std::exchange(other.m_slot, nullptr)));
    return *this;
}

void TzVciSocketGate::install(Common::platform::SharedSocket socket)
{
    auto free = std::find_if(m_slots.begin(), m_slots.end(),
                             [](const auto &slot) { return slot->isFree.load(std::memory_order_acquire); });
    if (free == m_slots.end())
        free = m_slots.insert(m_slots.end(), std::make_unique<Slot>());
    Slot *slot = free->get();
    slot->isFree.store(false, std::memory_order_relaxed);
    slot->socket = std::move(socket);
    slot->users.store(1, std::memory_order_release);
    // Sequentially consistent, here and in retire(): whoever ends a link clears its running flag and then looks here; a
    // reconnecting thread puts its socket here and then looks at the flag. One of the two must see the other.
    m_current.store(slot);
}

TzVciSocketGate::Use TzVciSocketGate::use() const noexcept
{
    while (Slot *slot = m_current.load(std::memory_order_acquire)) {
        std::uint32_t users = slot->users.load(std::memory_order_relaxed);
        while (users != 0) { // 0: retired between the two loads
            if (slot->users.compare_exchange_weak(users, users + 1, std::memory_order_acquire,
                                                  std::memory_order_relaxed))
                return Use(slot);
        }
    }
    return {};
}

bool TzVciSocketGate::retire() noexcept
{
    Slot *slot = m_current.exchange(nullptr);
    if (!slot)
        return false;
    slot->socket.shutdown(); // wakes a thread that waits in it
    leave(slot);
    return true;
}

void TzVciSocketGate::leave(Slot *slot) noexcept
{
    if (!slot || slot->users.fetch_sub(1, std::memory_order_acq_rel) != 1)
        return;
    slot->socket = {};
    slot->isFree.store(true, std::memory_order_release);
}
