// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace tztest {

/// Ends the process with a clear message when a test stands still: it must call step() at least once within the limit.
/// Any thread may call step().
class Watchdog
{
public:
    /// @param name   of the test, for the message
    /// @param limit  time from one step to the next
    Watchdog(std::string name, std::chrono::seconds limit);
    ~Watchdog();
    Watchdog(const Watchdog &) = delete;
    Watchdog &operator=(const Watchdog &) = delete;

    /// @param what  is begun now
    void step(std::string what);

private:
    using Clock = std::chrono::steady_clock;

    void watch();

    const std::string m_name;
    const std::chrono::seconds m_limit;
    std::mutex m_mutex; // protects the next three
    std::string m_step = "start";
    Clock::time_point m_due;
    bool m_stop = false;
    std::condition_variable m_wake;
    std::thread m_thread; // last: it uses all of the above
};

} // namespace tztest
