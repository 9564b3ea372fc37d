// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/blf/BlfWindow.h"

#include <QFile>

namespace BLF {

/// A log's file, read in large blocks from its begin to its end as it was when opened.
class BlfFile
{
public:
    /// @return false for what is no regular file, or cannot be opened
    bool open(const QString &path);
    /// Bytes; after a failed read the place where that was.
    std::uint64_t size() const noexcept { return m_size; }
    bool hasFailed() const noexcept { return m_hasFailed; }
    /// Of the first read that failed.
    const QString &errorText() const noexcept { return m_errorText; }

    /// Where the next byte stands in the file, and those that are in memory from there on.
    std::uint64_t position() const noexcept { return m_window.position(); }
    std::uint64_t left() const noexcept { return m_size - position(); }
    std::span<const std::byte> bytes() const noexcept { return m_window.bytes(); }
    BlfWindow &window() noexcept { return m_window; }
    /// Reads on until @p count bytes are in memory. @return false where the file ends before, or fails
    bool ensure(std::size_t count);
    /// Reads on by a block. @return false at the end
    bool readOn();
    /// Passes over bytes, also over such as are not in memory; at most left().
    void skip(std::uint64_t count);

private:
    bool fail(const QString &errorText);

    QFile m_file;
    BlfWindow m_window;
    std::uint64_t m_size = 0;
    bool m_hasFailed = false;
    QString m_errorText;
};

} // namespace BLF
