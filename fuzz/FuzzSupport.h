// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/Log.h"

#include <cstdlib>

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
