// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <atomic>
#include <cstdint>

/// Hands the latest value from one writing thread to one reading thread; older unread values are replaced. Neither side
/// ever waits: each owns one of three slots, the third is exchanged.
template <typename T> class TzVciLatestValue
{
public:
    /// Writing thread: the slot to fill before publish(). Holds an older value.
    T &next() noexcept { return m_slots[m_writing]; }
    /// Writing thread: makes the filled slot the latest value.
    void publish() noexcept
    {
        const auto fresh = static_cast<std::uint8_t>(m_writing | freshBit);
        m_writing = m_shared.exchange(fresh, std::memory_order_acq_rel) & slotMask;
    }

    /// Any thread: a value was published that nobody has taken yet.
    bool isFresh() const noexcept { return m_shared.load(std::memory_order_acquire) & freshBit; }
    /// Reading thread: moves on to the latest value. @return false if it was taken before
    bool take() noexcept
    {
        if (!isFresh())
            return false;
        m_reading = m_shared.exchange(m_reading, std::memory_order_acq_rel) & slotMask;
        return true;
    }
    /// Reading thread: the value taken last.
    const T &value() const noexcept { return m_slots[m_reading]; }

private:
    static constexpr std::uint8_t slotMask = 0x03;
    static constexpr std::uint8_t freshBit = 0x80;

    std::array<T, 3> m_slots{};
    std::uint8_t m_writing = 0;            // writing thread only
    std::uint8_t m_reading = 1;            // reading thread only
    std::atomic<std::uint8_t> m_shared{2}; // the slot between them, and whether it is fresh
};
