// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#if defined(__SANITIZE_THREAD__)
extern "C" {
void AnnotateIgnoreWritesBegin(const char *file, int line); // of the sanitizer's run-time library
void AnnotateIgnoreWritesEnd(const char *file, int line);
}
#endif

namespace Common::RaceAnnotations {

/// While it lives, the thread sanitizer does not look at what this thread reads and writes; atomic operations still
/// order threads. For calls into a library that makes its order by fences, which the sanitizer does not know: each of
/// its reports, also a suppressed one, is compared with all before, so thousands of them stop a program. Empty
/// elsewhere.
class UncheckedAccess
{
public:
    UncheckedAccess() noexcept
    {
#if defined(__SANITIZE_THREAD__)
        AnnotateIgnoreWritesBegin(__FILE__, __LINE__);
#endif
    }
    ~UncheckedAccess()
    {
#if defined(__SANITIZE_THREAD__)
        AnnotateIgnoreWritesEnd(__FILE__, __LINE__);
#endif
    }
    UncheckedAccess(const UncheckedAccess &) = delete;
    UncheckedAccess &operator=(const UncheckedAccess &) = delete;
};

} // namespace Common::RaceAnnotations
