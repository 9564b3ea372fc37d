// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace BLF {

/// Bytes that are put in at the end and taken from the front, and lie in one stretch meanwhile.
///
/// It moves them to the front of its memory only where there is no more room behind them, and grows only where they
/// fill it: as long as what is left each time is short, the cost for each byte is constant.
class BlfWindow
{
public:
    std::span<const std::byte> bytes() const noexcept { return {m_buffer.get() + m_begin, m_end - m_begin}; }
    /// How many bytes had come before the first of bytes().
    std::uint64_t position() const noexcept { return m_position; }
    /// Takes from the front; at most bytes().size().
    void consume(std::size_t count) noexcept
    {
        m_begin += count;
        m_position += count;
    }
    /// Memory behind bytes(), to be written and then put in by append(). What bytes() gave before is void.
    std::span<std::byte> room(std::size_t wanted)
    {
        if (m_capacity - m_end < wanted)
            makeRoom(wanted);
        return {m_buffer.get() + m_end, wanted};
    }
    /// Puts in the first @p count bytes of the last room().
    void append(std::size_t count) noexcept { m_end += count; }
    /// Forgets all bytes; the next to come is that at @p position.
    void restartAt(std::uint64_t position) noexcept;

private:
    void makeRoom(std::size_t wanted);

    std::unique_ptr<std::byte[]> m_buffer;
    std::size_t m_capacity = 0;
    std::size_t m_begin = 0; // of bytes() in m_buffer
    std::size_t m_end = 0;
    std::uint64_t m_position = 0;
};

} // namespace BLF
