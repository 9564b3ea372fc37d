// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>

namespace tztest {

// Counted in programs that link tz_test_allocations, which replaces operator new.

/// Calls of operator new by the calling thread since it began.
std::size_t allocationsOfThisThread() noexcept;
/// Calls of operator new by all threads since the program began.
std::size_t allocationsOfAllThreads() noexcept;
/// Bytes of the largest call by the calling thread since it asked last, or began.
std::size_t takeLargestAllocationOfThisThread() noexcept;

} // namespace tztest
