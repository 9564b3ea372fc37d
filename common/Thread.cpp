// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/Thread.h"

#include "common/platform/FatalSignals.h"
#include "common/platform/ThreadControl.h"

namespace Common {

void setThreadName(const char *name)
{
    platform::nameThisThread(name);
    platform::useAlternateSignalStack(); // without it all but a stack overflow is reported as well
}

} // namespace Common
