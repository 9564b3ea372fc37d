// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace Common {

/// How a device time stamp is shown. The numbers are kept in settings.
enum class TimestampDisplayMode : int
{
    AbsoluteTime = 0,       ///< 2025-05-07 14:30:22.123456, local time
    RelativeTime = 1,       ///< 3.123456, seconds since this device's base
    GlobalRelativeTime = 2, ///< 25.678901, seconds since the global reference; the default
    DeltaTime = 3,          ///< 0.001234, seconds since the previous call for that device
    TimeOfDay = 4           ///< 14:30:22.123456, local time
};

} // namespace Common
