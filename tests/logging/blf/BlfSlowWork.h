// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cerrno>
#include <chrono>
#include <csignal>
#include <ctime>

namespace tztest {

/// While it lives, the main thread is held up again and again in the midst of its work, as by a slow disk: what it does
/// then lasts long however fast the machine is. Counted by the thread's own work, so that a busy machine changes
/// nothing. One at a time, on the main thread.
class BlfSlowWork
{
public:
    /// @param hold  how long it stands still each time; less than a second
    explicit BlfSlowWork(std::chrono::milliseconds hold)
    {
        s_hold.tv_nsec = std::chrono::nanoseconds(hold).count();
        struct sigaction action = {};
        action.sa_handler = standStill;
        action.sa_flags = SA_RESTART;
        ::sigaction(SIGALRM, &action, &m_previous);
        sigevent event = {};
        event.sigev_notify = SIGEV_SIGNAL;
        event.sigev_signo = SIGALRM;
        m_isRunning = ::timer_create(CLOCK_THREAD_CPUTIME_ID, &event, &m_timer) == 0;
        constexpr timespec work{0, 1'000'000};
        constexpr itimerspec period{work, work};
        if (m_isRunning)
            ::timer_settime(m_timer, 0, &period, nullptr);
    }
    ~BlfSlowWork()
    {
        if (m_isRunning)
            ::timer_delete(m_timer);
        ::sigaction(SIGALRM, &m_previous, nullptr);
    }
    BlfSlowWork(const BlfSlowWork &) = delete;
    BlfSlowWork &operator=(const BlfSlowWork &) = delete;

private:
    static void standStill(int)
    {
        const int error = errno;
        ::nanosleep(&s_hold, nullptr);
        errno = error;
    }

    static inline timespec s_hold{};

    timer_t m_timer{};
    struct sigaction m_previous = {};
    bool m_isRunning = false;
};

} // namespace tztest
