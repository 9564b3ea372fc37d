// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/TzEndLimit.h"

#include "common/Thread.h"

#include <utility>

TzEndLimit::TzEndLimit(std::chrono::milliseconds limit, std::function<void()> onExpired)
    : m_onExpired(std::move(onExpired))
    , m_thread([this, deadline = std::chrono::steady_clock::now() + limit] { watch(deadline); })
{
}

TzEndLimit::~TzEndLimit()
{
    {
        const std::lock_guard lock(m_mutex);
        m_ended = true;
    }
    m_condition.notify_all();
    m_thread.join();
}

void TzEndLimit::watch(std::chrono::steady_clock::time_point deadline)
{
    Common::setThreadName("tz-end-limit");
    std::unique_lock lock(m_mutex);
    const bool inTime = m_condition.wait_until(lock, deadline, [this] { return m_ended; });
    lock.unlock();
    if (!inTime)
        m_onExpired();
}
