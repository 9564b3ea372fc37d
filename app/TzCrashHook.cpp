// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/TzCrashHook.h"

#include "common/Log.h"
#include "vci/TzVciDeviceManager.h"

#include <chrono>
#include <thread>

void tzCrashHook()
{
    constexpr std::chrono::milliseconds logDrainTime{1000};
    Common::logInfo("System abnormality, exiting...");
    TzVciDeviceManager::instance().closeAllDevices();
    std::this_thread::sleep_for(logDrainTime);
    Common::logStop();
}
