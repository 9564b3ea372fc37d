// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/CrashHandler.h"
#include "common/platform/WakeEvent.h"

#include <array>
#include <atomic>
#include <chrono>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

namespace Common {

/// What stands behind CrashHandler: the threads that sleep until a signal handler wakes them. Process-wide, never freed
/// before the exit, so that a handler that still runs finds it.
///
/// Threads: "tz-crash" watches the events and goes the crash road, "tz-crash-hook" runs the hook, "tz-terminate" the
/// termination callback. All three exist beforehand: a crashed thread may hold the locks that starting one takes.
class CrashRoad
{
public:
    static CrashRoad &instance(); ///< @throws std::system_error at the first call

    void setHook(void (*hook)()) { m_hook.store(hook); }
    void setHookLimit(std::chrono::milliseconds limit) { m_hookLimit.store(limit); }
    void start(); ///< @throws std::system_error where the system refuses a thread or a signal
    void stop();
    void setTermination(std::function<void()> callback, std::chrono::milliseconds limit);

    CrashRoad(const CrashRoad &) = delete;
    CrashRoad &operator=(const CrashRoad &) = delete;

private:
    using Clock = std::chrono::steady_clock;

    CrashRoad() = default;
    ~CrashRoad();

    static void onFatalSignal(int signal);
    static void onTerminationSignal(int signal);
    static void onTerminate();

    void travel(int signal, bool fromTerminate);
    void watch();
    std::chrono::milliseconds timeToTermination() const;
    void walk(int signal, bool isCrash);
    void report(int signal, bool hookEnded, bool isCrash);
    bool reportFrames();
    void runHook();
    void runTermination();
    void stopTermination();
    void joinAll();

    std::mutex m_mutex; // protects m_started, m_terminates and the starts and joins of threads
    bool m_started = false;
    bool m_terminates = false;
    std::atomic<bool> m_quit{false};
    std::atomic<bool> m_quitTermination{false};

    std::atomic<void (*)()> m_hook{nullptr};
    std::atomic<std::chrono::milliseconds> m_hookLimit{CrashHandler::defaultHookLimit};
    std::terminate_handler m_previousTerminate = nullptr;
    std::chrono::seconds m_utcOffset{0}; // taken at the start: asking for it takes a lock

    // Written by the first crashed thread; all but the frames before it wakes the watcher, the frames when asked for.
    std::atomic<long> m_crashedThread{0};
    std::atomic<int> m_crashSignal{0};
    std::array<char, 256> m_reason{}; // of std::terminate; zero-terminated
    std::array<void *, 64> m_frames{};
    std::atomic<int> m_frameCount{0};

    std::atomic<long> m_watcherId{0};
    std::atomic<long> m_hookRunnerId{0};
    platform::WakeEvent m_crashed;
    platform::WakeEvent m_terminationAsked;
    platform::WakeEvent m_hookWanted;
    platform::WakeEvent m_hookEnded;
    platform::WakeEvent m_framesWanted;
    platform::WakeEvent m_framesCaptured;
    platform::WakeEvent m_roadEnded;
    platform::WakeEvent m_terminationWanted;

    std::atomic<int> m_terminationSignal{0};
    std::atomic<std::chrono::milliseconds> m_terminationLimit{CrashHandler::defaultTerminationLimit};
    std::optional<Clock::time_point> m_terminationDeadline; // the watcher's
    std::function<void()> m_termination;                    // the thread's while it runs

    std::thread m_watcher;
    std::thread m_hookRunner;
    std::thread m_terminator;
};

} // namespace Common
