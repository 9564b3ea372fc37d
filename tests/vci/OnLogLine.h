// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/LogSink.h"

#include <atomic>
#include <functional>
#include <string>

namespace tztest {

/// Runs an action once, on the thread that logs, at the first line which contains a text: that is how a test gets in
/// between two steps of what it tests. The action must not log.
class OnLogLine : private Common::LogSink
{
public:
    OnLogLine(std::string part, std::function<void()> action)
        : m_part(std::move(part))
        , m_action(std::move(action))
    {
        Common::addLogSink(this);
    }
    ~OnLogLine() override { Common::removeLogSink(this); }
    OnLogLine(const OnLogLine &) = delete;
    OnLogLine &operator=(const OnLogLine &) = delete;

private:
    void onLogLine(int /*level*/, const std::string &text) override
    {
        if (text.find(m_part) != std::string::npos && !m_done.exchange(true))
            m_action();
    }

    const std::string m_part;
    const std::function<void()> m_action;
    std::atomic<bool> m_done{false};
};

} // namespace tztest
