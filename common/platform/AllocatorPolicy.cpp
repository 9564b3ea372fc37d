// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/platform/AllocatorPolicy.h"

#include <malloc.h>

namespace Common::platform {
namespace {

// Each new thread may be given an area of its own, and what was freed in one stays in it: with recorders that start and
// stop their threads all day, every area ends up as large as the largest recording needed it to be.
constexpr int mostAreas = 2;
// Left to itself the allocator raises this limit to the largest buffer that was ever freed, and keeps those from then
// on.
constexpr int mappedBufferBytes = 256 * 1024;
constexpr int keptAtTheEndBytes = 4 * 1024 * 1024; // of an area, lest memory goes to the system and back all the time

} // namespace

void keepMemoryLevel() noexcept
{
    ::mallopt(M_ARENA_MAX, mostAreas);
    ::mallopt(M_MMAP_THRESHOLD, mappedBufferBytes);
    ::mallopt(M_TRIM_THRESHOLD, keptAtTheEndBytes);
}

} // namespace Common::platform
