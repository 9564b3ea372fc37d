// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/LogCapture.h"

#include <algorithm>

namespace tztest {

LogCapture::LogCapture()
{
    Common::addLogSink(this);
}

LogCapture::~LogCapture()
{
    Common::removeLogSink(this);
}

std::vector<LogCapture::Line> LogCapture::lines() const
{
    const std::lock_guard lock(m_mutex);
    return m_lines;
}

std::size_t LogCapture::count(int level, std::string_view text) const
{
    const std::lock_guard lock(m_mutex);
    return static_cast<std::size_t>(std::count_if(m_lines.begin(), m_lines.end(), [&](const Line &line) {
        return line.level == level && line.text == text;
    }));
}

std::size_t LogCapture::countContaining(int level, std::string_view part) const
{
    const std::lock_guard lock(m_mutex);
    return static_cast<std::size_t>(std::count_if(m_lines.begin(), m_lines.end(), [&](const Line &line) {
        return line.level == level && line.text.find(part) != std::string::npos;
    }));
}

void LogCapture::clear()
{
    const std::lock_guard lock(m_mutex);
    m_lines.clear();
}

void LogCapture::onLogLine(int level, const std::string &text)
{
    const std::lock_guard lock(m_mutex);
    m_lines.push_back({level, text});
}

} // namespace tztest
