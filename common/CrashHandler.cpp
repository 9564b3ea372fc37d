// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/CrashHandler.h"

#include "common/CrashRoad.h"
#include "common/Log.h"

#include <exception>

namespace Common::CrashHandler {

namespace {

// What the system may refuse is a line in the log: the program runs without crash handling rather than not at all.
template <typename Action> void guarded(Action action)
{
    try {
        action(CrashRoad::instance());
    } catch (const std::exception &error) {
        logError("Crash handling is not available: {}", error.what());
    }
}

} // namespace

void setHook(void (*hook)())
{
    guarded([&](CrashRoad &road) { road.setHook(hook); });
}

void setHookLimit(std::chrono::milliseconds limit)
{
    guarded([&](CrashRoad &road) { road.setHookLimit(limit); });
}

void setup()
{
    guarded([](CrashRoad &road) { road.start(); });
}

void setTerminationCallback(std::function<void()> callback, std::chrono::milliseconds limit)
{
    guarded([&](CrashRoad &road) { road.setTermination(std::move(callback), limit); });
}

void shutdown()
{
    guarded([](CrashRoad &road) { road.stop(); });
}

} // namespace Common::CrashHandler
