// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/VciBuildInfo.h"

// The compiler takes both from SOURCE_DATE_EPOCH where it is set, so that a build can be repeated byte for byte.
const char *VciBuildInfo::buildDate() noexcept
{
    return __DATE__;
}

const char *VciBuildInfo::buildTime() noexcept
{
    return __TIME__;
}
