// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/Watchdog.h"

#include "common/Thread.h"

#include <fmt/format.h>

#include <cstdlib>
#include <utility>

namespace tztest {

Watchdog::Watchdog(std::string name, std::chrono::seconds limit)
    : m_name(std::move(name))
    , m_limit(limit)
    , m_due(Clock::now() + limit)
    , m_thread([this] { watch(); })
{
}

Watchdog::~Watchdog()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stop = true;
    }
    m_wake.notify_one();
    m_thread.join();
}

void Watchdog::step(std::string what)
{
    const std::lock_guard lock(m_mutex);
    m_step = std::move(what);
    m_due = Clock::now() + m_limit; // the thread looks at it when it wakes for the deadline that was
}

void Watchdog::watch()
{
    Common::setThreadName("test-watchdog");
    std::unique_lock lock(m_mutex);
    while (!m_stop) {
        const Clock::time_point due = m_due;
        if (m_wake.wait_until(lock, due, [this] { return m_stop; }))
            return;
        if (m_due > Clock::now())
            continue;
        fmt::print(stderr, "{} hangs: no progress for {} s since \"{}\"\n", m_name, m_limit.count(), m_step);
        std::fflush(stderr);
        std::abort(); // with a core, where cores are kept
    }
}

} // namespace tztest
