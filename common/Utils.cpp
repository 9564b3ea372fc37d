// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/Utils.h"

#include "common/CrashHandler.h"
#include "common/platform/ThreadControl.h"

namespace Common {

void Utils::registerCrashHandler(void (*handler)())
{
    CrashHandler::setHook(handler);
}

void Utils::setupCrashHandler()
{
    CrashHandler::setup();
}

void Utils::setProcessHighPriority()
{
    platform::raiseProcessPriority();
}

std::string Utils::getThreadIdString()
{
    return platform::thisThreadIdText();
}

} // namespace Common
