// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/platform/ThreadControl.h"

#include "common/platform/FatalSignals.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <string_view>

#include <pthread.h>
#include <sys/resource.h>

namespace Common::platform {

namespace {
constexpr std::size_t nameSize = 16; // the kernel's limit, the final zero included
constexpr int highPriority = -10;    // niceness: above all ordinary processes, below the system's own threads
} // namespace

void nameThisThread(const char *name)
{
    std::array<char, nameSize> text{};
    std::snprintf(text.data(), text.size(), "%s", name);
    ::pthread_setname_np(::pthread_self(), text.data());
}

std::string thisThreadIdText()
{
    return std::to_string(thisThreadId());
}

// Niceness is a property of each thread here, and a new thread takes over its creator's.
bool raiseProcessPriority()
{
    bool granted = true;
    std::error_code error;
    for (std::filesystem::directory_iterator task("/proc/self/task", error), end; !error && task != end;
         task.increment(error)) {
        const std::string name = task->path().filename().string();
        id_t id = 0;
        if (std::from_chars(name.data(), name.data() + name.size(), id).ec != std::errc())
            continue;
        granted = ::setpriority(PRIO_PROCESS, id, highPriority) == 0 && granted;
    }
    return granted && !error;
}

} // namespace Common::platform
