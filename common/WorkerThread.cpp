// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/WorkerThread.h"

#include "common/Thread.h"

#include <system_error>
#include <utility>

namespace Common {

WorkerThread::~WorkerThread()
{
    if (!isCurrent()) {
        join();
        return;
    }
    const std::lock_guard lock(m_mutex);
    m_thread.detach();
}

void WorkerThread::launch(const char *name, std::function<void()> body)
{
    if (isCurrent())
        throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
    const std::lock_guard lock(m_mutex);
    joinLocked();
    m_thread = std::thread([this, name, body = std::move(body)] {
        // Only this very thread ever compares equal to the id, so it is early enough to store it here.
        m_id.store(std::this_thread::get_id(), std::memory_order_release);
        setThreadName(name);
        body(); // after it the object may be gone
    });
}

bool WorkerThread::start(const char *name, std::function<void()> body)
{
    try {
        launch(name, std::move(body));
        return true;
    } catch (const std::system_error &) {
        return false;
    }
}

void WorkerThread::join()
{
    if (isCurrent())
        return;
    const std::lock_guard lock(m_mutex);
    joinLocked();
}

void WorkerThread::joinLocked()
{
    if (!m_thread.joinable())
        return;
    m_thread.join();
    m_id.store({}, std::memory_order_release);
}

} // namespace Common
