// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/HeartbeatManager.h"

#include <algorithm>
#include <utility>

namespace Common {

HeartbeatManager::HeartbeatManager(unsigned int intervalMs, const char *threadName,
                                   std::shared_ptr<HeartbeatClock> clock)
    : m_interval(std::max(intervalMs, 1U))
    , m_threadName(threadName)
    , m_clock(std::move(clock))
{
}

HeartbeatManager::~HeartbeatManager()
{
    stop();
}

void HeartbeatManager::setCallback(std::function<void()> callback)
{
    auto shared = callback ? std::make_shared<const std::function<void()>>(std::move(callback)) : nullptr;
    const std::lock_guard lock(m_callbackMutex);
    m_callback.swap(shared);
}

bool HeartbeatManager::start(unsigned int idleMs)
{
    if (m_thread.isCurrent())
        return false; // from its own callback: running, or about to end and not to be joined from here
    const std::lock_guard lock(m_lifecycleMutex);
    if (isRunning())
        return false;
    m_thread.join(); // a thread that stopped itself; its last writes must come before the ones below
    updateTimestamp();
    m_running.store(true, std::memory_order_release);
    const auto started = m_clock->now();
    const Clock::duration idle = std::chrono::milliseconds(idleMs);
    if (m_thread.start(m_threadName, [this, started, idle] { run(started, idle); }))
        return true;
    m_running.store(false, std::memory_order_release);
    return false;
}

void HeartbeatManager::stop()
{
    if (m_thread.isCurrent()) {
        m_running.store(false, std::memory_order_release);
        return;
    }
    const std::lock_guard lock(m_lifecycleMutex);
    m_running.store(false, std::memory_order_release);
    m_clock->wake();
    m_thread.join();
}

void HeartbeatManager::updateTimestamp() noexcept
{
    m_lastActivity.store(m_clock->now().time_since_epoch().count(), std::memory_order_relaxed);
}

void HeartbeatManager::run(Clock::time_point started, Clock::duration idle)
{
    auto wakeUp = started + m_interval;
    while (true) {
        const auto ticket = m_clock->ticket();
        if (!isRunning())
            return;
        if (!m_clock->sleepUntil(ticket, wakeUp))
            continue;
        if (isDue(m_clock->now(), idle)) {
            std::unique_lock lock(m_callbackMutex);
            const auto callback = m_callback;
            lock.unlock();
            if (callback)
                (*callback)();
        }
        // The next point of the grid that lies ahead.
        wakeUp += m_interval * std::max<Clock::rep>(1, (m_clock->now() - wakeUp) / m_interval + 1);
    }
}

bool HeartbeatManager::isDue(Clock::time_point now, Clock::duration idle) const noexcept
{
    const Clock::time_point lastActivity{Clock::duration(m_lastActivity.load(std::memory_order_relaxed))};
    return idle == Clock::duration::zero() || now - lastActivity >= idle;
}

} // namespace Common
