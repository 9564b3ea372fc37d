// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/AllocationCounter.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>
#include <utility>

namespace {

thread_local std::size_t allocations = 0;
thread_local std::size_t largest = 0;
std::atomic<std::size_t> allAllocations{0};

} // namespace

std::size_t tztest::allocationsOfThisThread() noexcept
{
    return allocations;
}

std::size_t tztest::allocationsOfAllThreads() noexcept
{
    return allAllocations.load();
}

std::size_t tztest::takeLargestAllocationOfThisThread() noexcept
{
    return std::exchange(largest, 0);
}

// The other forms of the standard library come down to these, but with a sanitizer those for arrays do not.
void *operator new(std::size_t size)
{
    ++allocations;
    largest = std::max(largest, size);
    allAllocations.fetch_add(1, std::memory_order_relaxed);
    if (void *memory = std::malloc(size == 0 ? 1 : size))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void *memory) noexcept
{
    std::free(memory);
}

void operator delete(void *memory, std::size_t) noexcept
{
    std::free(memory);
}

void *operator new[](std::size_t size)
{
    return operator new(size);
}

void operator delete[](void *memory) noexcept
{
    std::free(memory);
}

void operator delete[](void *memory, std::size_t) noexcept
{
    std::free(memory);
}
