// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/HeartbeatClock.h"
#include "common/WorkerThread.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>

namespace Common {

/// A small timer thread, for the keep-alive of a link and for workers that drain a queue at intervals.
///
/// Wake-ups are at whole multiples of the interval after start(), on the steady clock: they do not drift, and those
/// that a slow callback overruns are left out.
///
/// Threads: the callback runs on a thread of this object. All functions may be called from any thread, stop() also from
/// the callback. An object must not be destroyed by its own callback.
class HeartbeatManager
{
public:
    /// @param intervalMs  time between wake-ups; 0 counts as 1
    /// @param threadName  at most 15 characters; must outlive the object
    /// @param clock       not null; one of its own, since its sleep is the thread's
    explicit HeartbeatManager(unsigned int intervalMs, const char *threadName = "tz-heartbeat",
                              std::shared_ptr<HeartbeatClock> clock = std::make_shared<HeartbeatClock>());
    /// As stop().
    ~HeartbeatManager();
    HeartbeatManager(const HeartbeatManager &) = delete;
    HeartbeatManager &operator=(const HeartbeatManager &) = delete;

    /// May be set before start() or while running; it counts from the next wake-up on.
    void setCallback(std::function<void()> callback);
    /// Starts the thread; the first wake-up comes one interval later.
    /// @param idleMs  0: the callback is called at every wake-up. Otherwise: at wake-ups when updateTimestamp() was not
    ///                called for at least that long; start() counts as a call
    /// @return false when it runs already or no thread can be started
    bool start(unsigned int idleMs);
    /// Ends the thread; when it returns no callback runs any more, unless it was called from the callback itself. May
    /// be started again.
    void stop();
    bool isRunning() const noexcept { return m_running.load(std::memory_order_acquire); }
    /// Notes an activity. Costs one clock reading and one store.
    void updateTimestamp() noexcept;

private:
    using Clock = HeartbeatClock::Clock;

    void run(Clock::time_point started, Clock::duration idle);
    bool isDue(Clock::time_point now, Clock::duration idle) const noexcept;

    const std::chrono::milliseconds m_interval;
    const char *const m_threadName;
    std::mutex m_callbackMutex; // protects m_callback
    std::shared_ptr<const std::function<void()>> m_callback;
    std::mutex m_lifecycleMutex; // start() and stop() one after the other; never taken on the thread itself
    std::atomic<bool> m_running{false};
    std::atomic<Clock::rep> m_lastActivity{0}; // time since the clock's epoch
    const std::shared_ptr<HeartbeatClock> m_clock;
    WorkerThread m_thread;
};

} // namespace Common
