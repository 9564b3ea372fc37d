// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/platform/SteadySleeper.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <ctime>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Common::platform {

static_assert(sizeof(std::atomic<std::uint32_t>) == sizeof(std::uint32_t), "the kernel waits on the bare word");
static_assert(std::atomic<std::uint32_t>::is_always_lock_free, "wake() is for signal handlers too");

namespace {

timespec toTimespec(SteadySleeper::Clock::time_point time) noexcept
{
    // A time before the machine's start is as far gone as any; the kernel refuses negative ones.
    const auto sinceEpoch = std::max(time.time_since_epoch(), SteadySleeper::Clock::duration::zero());
    const auto seconds = std::chrono::floor<std::chrono::seconds>(sinceEpoch);
    return {.tv_sec = static_cast<time_t>(seconds.count()),
            .tv_nsec = static_cast<long>(std::chrono::nanoseconds(sinceEpoch - seconds).count())};
}

} // namespace

// The bitset form of the wait is the one that takes an absolute time; without FUTEX_CLOCK_REALTIME that is a time of
// CLOCK_MONOTONIC, which the steady clock shows.
bool SteadySleeper::sleepUntil(Ticket ticket, Clock::time_point deadline) noexcept
{
    const timespec end = toTimespec(deadline);
    while (m_wakeUps.load(std::memory_order_acquire) == ticket) {
        const long result = ::syscall(SYS_futex, &m_wakeUps, FUTEX_WAIT_BITSET | FUTEX_PRIVATE_FLAG, ticket,
                                      deadline == never ? nullptr : &end, nullptr, FUTEX_BITSET_MATCH_ANY);
        if (result == -1 && errno == ETIMEDOUT)
            return m_wakeUps.load(std::memory_order_acquire) == ticket;
    }
    return false;
}

void SteadySleeper::wake() noexcept
{
    m_wakeUps.fetch_add(1, std::memory_order_acq_rel);
    ::syscall(SYS_futex, &m_wakeUps, FUTEX_WAKE | FUTEX_PRIVATE_FLAG, INT_MAX, nullptr, nullptr, 0);
}

} // namespace Common::platform
