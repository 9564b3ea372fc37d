// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/Log.h"
#include "common/LogSink.h"

#include <cstdlib>
#include <string>

/// A finding where @p condition does not hold.
inline void require(bool condition)
{
    if (!condition)
        std::abort();
}

/// For LLVMFuzzerInitialize(): what the code under test tells about bad input would fill the screen.
inline void silenceLog()
{
    Common::logInit("", Common::LogLevel::none, 1, 1);
    Common::logStart(true);
}

/// For LLVMFuzzerInitialize(): every line is made, of every level, and dropped.
inline void makeLogLinesForNobody()
{
    class Nobody : public Common::LogSink
    {
        void onLogLine(int, const std::string &) override {}
    };
    static Nobody nobody; // for the program's life
    silenceLog();
    Common::addLogSink(&nobody);
}
