// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/simulator/Wire.h"

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tzsim {

/// Lays records end to end into datagrams of at most wire::maxDatagram bytes. Not thread-safe.
class DatagramPacker
{
public:
    static constexpr std::size_t capacity = 32; ///< datagrams

    DatagramPacker()
        : m_buffers(capacity)
    {
    }

    /// Room for a record of @p size bytes, or null when all datagrams are full: send them, clear() and ask again.
    std::uint8_t *reserve(std::size_t size)
    {
        assert(size <= wire::maxDatagram);
        if (m_count == 0 || m_sizes[m_count - 1] + size > wire::maxDatagram) {
            if (m_count == capacity)
                return nullptr;
            m_sizes[m_count++] = 0;
        }
        std::uint8_t *room = m_buffers[m_count - 1].data() + m_sizes[m_count - 1];
        m_sizes[m_count - 1] += size;
        return room;
    }
    std::size_t count() const { return m_count; }
    std::span<std::uint8_t> datagram(std::size_t i) { return {m_buffers[i].data(), m_sizes[i]}; }
    void clear() { m_count = 0; }

private:
    std::vector<std::array<std::uint8_t, wire::maxDatagram>> m_buffers;
    std::array<std::size_t, capacity> m_sizes{};
    std::size_t m_count = 0;
};

} // namespace tzsim
