// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

namespace Common {

/// Text that grows at its end and is reused: clear() keeps the memory. For lines whose greatest length is known, which
/// are written without a test for each character.
class LineBuffer
{
public:
    explicit LineBuffer(std::size_t capacity)
        : m_text(std::make_unique_for_overwrite<char[]>(capacity))
        , m_capacity(capacity)
    {
    }

    /// Room for @p length characters behind the text; valid until the next call. Follow with commit().
    char *reserve(std::size_t length)
    {
        if (m_capacity - m_size < length)
            grow(m_size + length);
        return m_text.get() + m_size;
    }
    /// Takes what was written into the room up to @p end.
    void commit(const char *end) noexcept { m_size = static_cast<std::size_t>(end - m_text.get()); }
    void clear() noexcept { m_size = 0; }
    bool empty() const noexcept { return m_size == 0; }
    std::string_view text() const noexcept { return {m_text.get(), m_size}; }

private:
    void grow(std::size_t needed)
    {
        const std::size_t capacity = std::max(needed, 2 * m_capacity);
        auto text = std::make_unique_for_overwrite<char[]>(capacity);
        std::memcpy(text.get(), m_text.get(), m_size);
        m_text = std::move(text);
        m_capacity = capacity;
    }

    std::unique_ptr<char[]> m_text;
    std::size_t m_capacity;
    std::size_t m_size = 0;
};

} // namespace Common
