// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/logging/LockFailure.h"

#include <sys/file.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

namespace {

std::atomic<int> lockError{0};

} // namespace

// In the place of the C library's function of this name.
extern "C" int flock(int descriptor, int operation) noexcept
{
    if (const int error = lockError.load()) {
        errno = error;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_flock, descriptor, operation));
}

namespace tztest {

LockFailure::LockFailure(int error)
{
    lockError.store(error);
}

LockFailure::~LockFailure()
{
    lockError.store(0);
}

} // namespace tztest
