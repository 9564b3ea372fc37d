// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#if defined(__SANITIZE_THREAD__)
#include <sanitizer/tsan_interface.h>
#endif

/// Tells the thread sanitizer of an order between threads that it cannot see, because a library makes it by a fence.
/// They order nothing by themselves and are empty in every other build.
namespace Common::RaceAnnotations {

/// What the calling thread did so far comes before what follows the next acquired() of the same @p object.
inline void released([[maybe_unused]] const void *object) noexcept
{
#if defined(__SANITIZE_THREAD__)
    __tsan_release(const_cast<void *>(object));
#endif
}

/// What follows comes behind everything in front of the last released() of the same @p object.
inline void acquired([[maybe_unused]] const void *object) noexcept
{
#if defined(__SANITIZE_THREAD__)
    __tsan_acquire(const_cast<void *>(object));
#endif
}

} // namespace Common::RaceAnnotations
