// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <system_error>

namespace Common::platform {

/// A regular file that one writer holds at a time. Unbuffered.
///
/// The hold is an advisory lock that everything written with this class respects, in this process and in others; a file
/// system that knows no locks is written without. Reading and renaming stay free to everybody.
///
/// Threads: one at a time.
class ExclusiveFile
{
public:
    ExclusiveFile() = default;
    ~ExclusiveFile() { close(); }
    ExclusiveFile(const ExclusiveFile &) = delete;
    ExclusiveFile &operator=(const ExclusiveFile &) = delete;

    /// Opens or creates the file, takes the lock without waiting, and only then empties the file: one that another
    /// writer holds is left as it is. A file that was open before is closed.
    /// @param path  in the local 8-bit encoding
    [[nodiscard]] std::error_code open(const std::string &path);
    /// Takes the lock of a file that exists without waiting, and leaves the file as it is; it is not open for writing.
    /// A file that was open before is closed.
    /// @return operation_would_block where another writer holds it
    [[nodiscard]] std::error_code hold(const std::string &path);
    bool isOpen() const noexcept { return m_descriptor >= 0; }
    /// Whether @p path still names the file that is open: anybody may have renamed or removed it.
    bool isAt(const std::string &path) const noexcept;
    /// Appends @p data. @return bytes that reached the file: fewer than given when it can take no more
    std::size_t write(std::string_view data) noexcept;
    /// Cuts the file, so that the next write() appends there.
    bool truncate(std::uint64_t size) noexcept;
    /// Lets go of the file, in any case. Nothing to do where none is open.
    /// @return what kept something written before from reaching the file: a file system that is far away or counts what
    ///         each user has may tell only now
    std::error_code close() noexcept;

private:
    int m_descriptor = -1;
};

} // namespace Common::platform
