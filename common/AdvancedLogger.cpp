// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/AdvancedLogger.h"

#include "common/Log.h"
#include "common/Thread.h"
#include "common/Utils.h"

#include <utility>

namespace Common {

AdvancedLogger::AdvancedLogger(const std::string &filePath)
{
    if (Utils::ensureFilePath(filePath))
        m_file.open(filePath, std::ios::binary | std::ios::app);
    if (!m_file.is_open()) {
        logError("Failed to open the log file {}", filePath);
        m_stopped = true;
        return;
    }
    m_writer = std::thread(&AdvancedLogger::writeLoop, this);
}

AdvancedLogger::~AdvancedLogger()
{
    stop();
}

void AdvancedLogger::logRawData(std::string &&text)
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_stopped)
            return;
        if (m_pending.size() + text.size() > maxPending) {
            m_dropped += text.size();
            return;
        }
        m_pending += text;
    }
    m_wake.notify_one();
}

void AdvancedLogger::stop()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stopped = true;
    }
    m_wake.notify_one();
    const std::lock_guard lock(m_joinMutex);
    if (m_writer.joinable())
        m_writer.join();
    m_file.close();
}

void AdvancedLogger::writeLoop()
{
    setThreadName("tz-rawlog");
    std::string text;
    for (bool stopped = false; !stopped;) {
        std::size_t dropped = 0;
        text.clear();
        {
            std::unique_lock lock(m_mutex);
            m_wake.wait(lock, [this] { return m_stopped || !m_pending.empty(); });
            std::swap(text, m_pending);
            dropped = std::exchange(m_dropped, 0);
            stopped = m_stopped;
        }
        if (dropped > 0)
            logWarning("A log file was overloaded: {} bytes lost", dropped);
        if (m_file && !(m_file << text << std::flush))
            logError("Failed to write a log file, what follows is dropped");
    }
}

} // namespace Common
