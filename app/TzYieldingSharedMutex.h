// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <shared_mutex>

/// A shared mutex whose readers give way to a writer that waits. The standard one lets readers in as long as another
/// reads, so that drains under full load would keep the user interface waiting for ever.
///
/// Not recursive. Any thread; for std::unique_lock and std::shared_lock.
class TzYieldingSharedMutex
{
public:
    void lock()
    {
        m_writers.fetch_add(1);
        m_mutex.lock();
    }
    void unlock()
    {
        m_mutex.unlock();
        if (m_writers.fetch_sub(1) == 1)
            m_writers.notify_all();
    }
    void lock_shared()
    {
        for (int writers = m_writers.load(); writers > 0; writers = m_writers.load())
            m_writers.wait(writers);
        m_mutex.lock_shared();
    }
    void unlock_shared() { m_mutex.unlock_shared(); }

private:
    std::shared_mutex m_mutex;
    std::atomic<int> m_writers{0}; // that wait or write
};
