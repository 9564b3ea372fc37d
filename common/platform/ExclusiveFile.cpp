// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/platform/ExclusiveFile.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Common::platform {

namespace {

constexpr mode_t readableByAll = 0666; // as far as the process's mask lets it

std::error_code lastError()
{
    return {errno, std::generic_category()};
}

std::error_code lock(int descriptor)
{
    const bool isLocked = ::flock(descriptor, LOCK_EX | LOCK_NB) == 0;
    if (isLocked || errno == ENOSYS || errno == EOPNOTSUPP || errno == ENOLCK) // what knows no locks is written without
        return {};
    return lastError();
}

bool isNamedBy(const std::string &path, const struct stat &held)
{
    struct stat named = {};
    return ::stat(path.c_str(), &named) == 0 && held.st_dev == named.st_dev && held.st_ino == named.st_ino;
}

// A file that its last holder renamed between our open and our lock is no longer the one that was meant.
std::error_code checkStillThere(int descriptor, const std::string &path)
{
    struct stat held = {};
    if (::fstat(descriptor, &held) != 0)
        return lastError();
    if (!isNamedBy(path, held))
        return std::make_error_code(std::errc::resource_unavailable_try_again);
    if (!S_ISREG(held.st_mode))
        return std::make_error_code(std::errc::invalid_argument);
    return {};
}

std::error_code takeWhole(int descriptor, const std::string &path)
{
    if (const auto error = lock(descriptor))
        return error;
    if (const auto error = checkStillThere(descriptor, path))
        return error;
    return ::ftruncate(descriptor, 0) == 0 ? std::error_code() : lastError();
}

} // namespace

std::error_code ExclusiveFile::open(const std::string &path)
{
    close();
    // Not waiting, because a named pipe without a reader would keep the caller for ever.
    const int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, readableByAll);
    if (descriptor < 0)
        return lastError();
    if (const auto error = takeWhole(descriptor, path)) {
        ::close(descriptor);
        return error;
    }
    m_descriptor = descriptor;
    return {};
}

std::error_code ExclusiveFile::hold(const std::string &path)
{
    close();
    // A link is not followed: what it leads to has another name and does not suffer when this one is given away.
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0)
        return lastError();
    if (const auto error = lock(descriptor)) {
        ::close(descriptor);
        return error;
    }
    m_descriptor = descriptor;
    return {};
}

bool ExclusiveFile::isAt(const std::string &path) const noexcept
{
    struct stat held = {};
    return isOpen() && ::fstat(m_descriptor, &held) == 0 && isNamedBy(path, held);
}

std::size_t ExclusiveFile::write(std::string_view data) noexcept
{
    std::size_t reached = 0;
    while (isOpen() && reached < data.size()) {
        const ssize_t count = ::write(m_descriptor, data.data() + reached, data.size() - reached);
        if (count > 0)
            reached += static_cast<std::size_t>(count);
        else if (count == 0 || errno != EINTR)
            break;
    }
    return reached;
}

bool ExclusiveFile::truncate(std::uint64_t size) noexcept
{
    const auto offset = static_cast<off_t>(size);
    return isOpen() && ::ftruncate(m_descriptor, offset) == 0 && ::lseek(m_descriptor, offset, SEEK_SET) == offset;
}

std::error_code ExclusiveFile::close() noexcept
{
    const int descriptor = std::exchange(m_descriptor, -1);
    return descriptor < 0 || ::close(descriptor) == 0 ? std::error_code() : lastError();
}

} // namespace Common::platform
