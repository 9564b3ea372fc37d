// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/platform/LocalTime.h"

namespace Common::platform {

std::tm localTime(std::int64_t second) noexcept
{
    const auto time = static_cast<std::time_t>(second);
    std::tm result{};
    if (!::localtime_r(&time, &result)) {
        result = {};
        result.tm_year = 70;
        result.tm_mday = 1;
        result.tm_wday = 4;
    }
    return result;
}

long utcOffsetSeconds() noexcept
{
    return localTime(std::time(nullptr)).tm_gmtoff;
}

} // namespace Common::platform
