// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/blf/BlfWindow.h"

#include <algorithm>
#include <cstring>

namespace BLF {

namespace {

constexpr std::size_t smallestCapacity = 64 * 1024; // many small pieces before anything is moved

} // namespace

void BlfWindow::restartAt(std::uint64_t position) noexcept
{
    m_begin = 0;
    m_end = 0;
    m_position = position;
}

void BlfWindow::makeRoom(std::size_t wanted)
{
    const std::span<const std::byte> live = bytes();
    if (m_capacity >= live.size() + wanted) {
        std::memmove(m_buffer.get(), live.data(), live.size());
    } else {
        const std::size_t capacity = std::max({smallestCapacity, 2 * m_capacity, live.size() + wanted});
        auto buffer = std::make_unique_for_overwrite<std::byte[]>(capacity);
        std::ranges::copy(live, buffer.get());
        m_buffer = std::move(buffer);
        m_capacity = capacity;
    }
    m_begin = 0;
    m_end = live.size();
}

} // namespace BLF
