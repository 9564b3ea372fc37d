// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <ctime>

namespace tztest {

/// Processor time of this thread in seconds, so that what else the machine does counts little.
inline double threadSeconds()
{
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

} // namespace tztest
