// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>

namespace tztest {

/// Calls of operator new by the calling thread since it began. Counted in programs that build AllocationCounter.cpp.
std::size_t allocationsOfThisThread() noexcept;

} // namespace tztest
