// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>

namespace Common {

/// What a LIN recording is to look like and where it goes.
struct LINLoggerConfig
{
    std::string filePath;          ///< in the local 8-bit encoding
    std::int32_t format = 0;       ///< 0 ASC, anything else CSV
    std::int32_t sizeLimitMb = 10; ///< MiB at which a new file is begun; taken as 1 to 100
    bool logExtraInfo = false;     ///< adds device index and protected identifier to each line
    bool absoluteTime = true;      ///< times since the file's first record; false: since the record before
};

} // namespace Common
