// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/Log.h"

#include <string>

namespace tztest {

/// While it lives, log lines reach the sinks alone, such as LogCapture; for tests that make thousands of them. The log
/// is not started then, as a test finds it.
class QuietLog
{
public:
    QuietLog() { setLevel(Common::LogLevel::none); }
    ~QuietLog()
    {
        setLevel(Common::LogLevel::info);
        Common::logStop();
    }
    QuietLog(const QuietLog &) = delete;
    QuietLog &operator=(const QuietLog &) = delete;

private:
    static void setLevel(int level)
    {
        Common::logInit(std::string(), level, 1, 1);
        Common::logStart(true);
    }
};

} // namespace tztest
