// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace tztest {

/// What a process holds of the system at a moment.
struct ProcessFigures
{
    std::size_t threads = 0;
    std::size_t descriptors = 0;
    double residentMiB = 0;
    double cpuSeconds = 0; ///< of user and system, since its start

    /// @param pid  0 for this process; all figures are 0 for one that does not exist
    static ProcessFigures of(int pid = 0);
};

/// Names of the threads of this process, sorted; for the message of a test that found too many.
std::vector<std::string> threadNames();

} // namespace tztest
