// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/platform/ThreadScheduling.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <pthread.h>
#include <sched.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace Common::platform::ThreadScheduling {

bool requestRealTimePriority() noexcept
{
    constexpr int aboveTheLowest = 9; // leaves room below for others of this kind and stays far below kernel threads
    sched_param parameters{};
    parameters.sched_priority =
        std::min(sched_get_priority_min(SCHED_FIFO) + aboveTheLowest, sched_get_priority_max(SCHED_FIFO));
    return pthread_setschedparam(pthread_self(), SCHED_FIFO, &parameters) == 0;
}

void requestExactSleeps() noexcept
{
    constexpr unsigned long shortestSlackNs = 1;
    ::prctl(PR_SET_TIMERSLACK, shortestSlackNs, 0UL, 0UL, 0UL);
}

int pinToProcessor() noexcept
{
    static std::atomic<unsigned> next{0};
    cpu_set_t allowed;
    CPU_ZERO(&allowed);
    if (pthread_getaffinity_np(pthread_self(), sizeof(allowed), &allowed) != 0)
        return -1;

    std::array<int, CPU_SETSIZE> processors{};
    std::size_t count = 0;
    for (int processor = 0; processor < CPU_SETSIZE; ++processor) {
        if (CPU_ISSET(static_cast<std::size_t>(processor), &allowed))
            processors[count++] = processor;
    }
    if (count == 0)
        return -1;

    // From the last one down: the first processors serve most of a machine's interrupts.
    const int chosen = processors[count - 1 - next.fetch_add(1, std::memory_order_relaxed) % count];
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(static_cast<std::size_t>(chosen), &one);
    return pthread_setaffinity_np(pthread_self(), sizeof(one), &one) == 0 ? chosen : -1;
}

void unpin() noexcept
{
    cpu_set_t allowed;
    CPU_ZERO(&allowed);
    // The main thread is never pinned here, so its processors are those of the process.
    if (::sched_getaffinity(::getpid(), sizeof(allowed), &allowed) == 0)
        pthread_setaffinity_np(pthread_self(), sizeof(allowed), &allowed);
}

} // namespace Common::platform::ThreadScheduling
