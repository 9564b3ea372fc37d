// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <ctime>

namespace Common::platform {

/// Local calendar time of a second since 1970 (UTC). A second that the calendar cannot hold gives 1970-01-01 00:00:00.
std::tm localTime(std::int64_t second) noexcept;

/// Seconds that local time is ahead of UTC now.
long utcOffsetSeconds() noexcept;

} // namespace Common::platform
