// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/platform/ExclusiveFile.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace Common {

/// A text file that is written line by line through a buffer of 64 KiB, and is whole at every failure.
///
/// A write that fails, on a full disk say, is the last one: what had reached the file is cut back to whole lines that
/// leave room for its closing line and gets that, and all further text is dropped until the file is opened again.
///
/// Threads: one at a time.
class RecordingFile
{
public:
    static constexpr std::size_t bufferSize = 64 * 1024;

    RecordingFile();

    /// Opens the file for this process alone and empties it.
    /// @param footer  the closing line, written by finish(); must outlive the file
    /// @return false when it cannot be opened or another recorder holds it; it is left as it was then
    [[nodiscard]] bool open(const std::string &path, std::string_view footer);
    bool isOpen() const noexcept { return m_file.isOpen(); }
    /// Whether @p path still names the open file.
    bool isAt(const std::string &path) const noexcept { return m_file.isAt(path); }
    /// False from the first failed write on.
    bool isGood() const noexcept { return !m_hasFailed; }
    /// Takes whole lines.
    void write(std::string_view lines);
    /// Hands the buffered lines to the system. @return isGood()
    bool flush();
    /// Writes the closing line and flushes. Nothing may be written after it; the file stays open and locked.
    void finish();
    void close();
    /// Length of all text taken since open(), whether or not it reached the disk.
    std::uint64_t bytesWritten() const noexcept { return m_bytesWritten; }

private:
    void writeThrough(std::string_view lines);
    void follow(std::string_view reached);
    std::size_t settledPart(std::string_view text) const noexcept;
    void endAfterFailure();

    platform::ExclusiveFile m_file;
    std::unique_ptr<char[]> m_buffer;
    std::size_t m_buffered = 0;
    std::string_view m_footer;
    std::uint64_t m_bytesWritten = 0;
    std::uint64_t m_settled = 0; // bytes of the file that are whole lines and leave it room for the closing line
    std::string m_tail;          // what stands in the file behind them
    bool m_hasFailed = false;
};

} // namespace Common
