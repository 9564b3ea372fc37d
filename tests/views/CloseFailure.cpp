// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/views/CloseFailure.h"

#include <atomic>
#include <cerrno>

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

std::atomic<int> closeError{0};

} // namespace

// In the place of the C library's function of this name; a sanitizer's, if there is one, still sees each call.
extern "C" int close(int descriptor)
{
    static const auto next = reinterpret_cast<int (*)(int)>(::dlsym(RTLD_NEXT, "close"));
    const int error = closeError.load();
    const bool fails = error != 0 && (::fcntl(descriptor, F_GETFL) & O_ACCMODE) == O_WRONLY;
    const int result = next(descriptor);
    if (!fails)
        return result;
    errno = error;
    return -1;
}

namespace tztest {

CloseFailure::CloseFailure(int error)
{
    closeError.store(error);
}

CloseFailure::~CloseFailure()
{
    closeError.store(0);
}

} // namespace tztest
