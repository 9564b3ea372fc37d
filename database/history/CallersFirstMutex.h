// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <condition_variable>
#include <mutex>

/// A lock in which work in the background steps back for callers: a caller waits for the piece of work in hand, never
/// for the next one. Any thread; not recursive; unlocked by the thread that holds it.
class CallersFirstMutex
{
public:
    void lock()
    {
        std::unique_lock lock(m_mutex);
        ++m_callers;
        m_changed.wait(lock, [this] { return !m_held; });
        --m_callers;
        m_held = true;
    }
    void lockInBackground()
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return !m_held && m_callers == 0; });
        m_held = true;
    }
    void unlock()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_held = false;
        }
        m_changed.notify_all();
    }

    /// Callers that wait at this moment.
    int waitingCallers() const
    {
        const std::lock_guard lock(m_mutex);
        return m_callers;
    }

private:
    mutable std::mutex m_mutex; // protects what follows, for moments only
    std::condition_variable m_changed;
    int m_callers = 0; // that wait
    bool m_held = false;
};
