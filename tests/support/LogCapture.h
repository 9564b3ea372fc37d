// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/LogSink.h"

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace tztest {

/// Collects every log line of the process while it lives; log lines are behaviour, and tests assert them.
class LogCapture : private Common::LogSink
{
public:
    struct Line
    {
        int level = 0;
        std::string text;
        bool operator==(const Line &) const = default;
    };

    LogCapture();
    ~LogCapture() override;
    LogCapture(const LogCapture &) = delete;
    LogCapture &operator=(const LogCapture &) = delete;

    std::vector<Line> lines() const;
    /// Lines with exactly this level and text.
    std::size_t count(int level, std::string_view text) const;
    bool has(int level, std::string_view text) const { return count(level, text) > 0; }
    /// Lines of that level which contain the text.
    std::size_t countContaining(int level, std::string_view part) const;
    void clear();

private:
    void onLogLine(int level, const std::string &text) override;

    mutable std::mutex m_mutex; // protects m_lines
    std::vector<Line> m_lines;
};

} // namespace tztest
