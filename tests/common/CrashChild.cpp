// SPDX-License-Identifier: GPL-3.0-or-later
// A program that dies in the way its first argument names; the crash handler's test looks at what it leaves behind.
#include "common/CrashHandler.h"
#include "common/EmergencyStop.h"
#include "common/Log.h"
#include "common/LogSink.h"
#include "common/Thread.h"
#include "common/Utils.h"
#include "common/platform/Socket.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>

#include <dlfcn.h>
#include <execinfo.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

using Common::Utils;
namespace CrashHandler = Common::CrashHandler;
namespace EmergencyStop = Common::EmergencyStop;

constexpr std::chrono::milliseconds shortLimit{300};

void say(std::string_view text)
{
    [[maybe_unused]] const auto written = ::write(STDOUT_FILENO, text.data(), text.size());
}

void stayForever()
{
    for (;;)
        std::this_thread::sleep_for(std::chrono::hours(1));
}

void hook()
{
    say("hook\n");
    Common::logInfo("System abnormality, exiting...");
    Common::logStop();
}

void hangingHook()
{
    say("hook\n");
    stayForever();
}

void crashingHook()
{
    say("hook\n");
    std::raise(SIGSEGV);
}

void throwingHook()
{
    say("hook\n");
    throw std::runtime_error("hook threw");
}

void exitingHook()
{
    say("hook\n");
    std::exit(7); // NOLINT(concurrency-mt-unsafe): the point of the test
}

// The lowest page of the address space is never mapped.
void faultAt(std::uintptr_t address)
{
    *reinterpret_cast<volatile int *>(address) = 1; // NOLINT: a fault is wanted
}

void fault()
{
    volatile std::uintptr_t address = sizeof(int); // volatile: the compiler refuses what it sees coming
    faultAt(address);
}

// What the unwinder does, once set, in the place of its work.
std::atomic<void (*)()> unwinderTrouble{nullptr};

void crashWith(void (*trouble)())
{
    unwinderTrouble = trouble;
    fault();
}

// Big frames, not to be optimised into a loop.
int overflow(int depth) // NOLINT(misc-no-recursion)
{
    volatile char frame[4096];
    frame[0] = static_cast<char>(depth);
    return depth < 0 ? 0 : overflow(depth + 1) + frame[0];
}

void throwUncaught()
{
    std::thread([] { throw std::runtime_error("nobody catches this"); }).join();
}

void onThread(void (*action)())
{
    std::thread([action] {
        Common::setThreadName("tz-victim");
        action();
    }).join();
}

// The box's address and port come behind the mode.
void armEmergencyStop(char **arguments)
{
    static const auto socket = Common::platform::SharedSocket::openUdp();
    socket.connect(arguments[2], static_cast<std::uint16_t>(std::stoi(arguments[3])));
    const int slot = EmergencyStop::acquireSlot(socket.descriptor());
    EmergencyStop::arm(slot, 1, 0, std::string_view("close can 0"));
}

void waitForSignal(std::function<void()> callback, std::chrono::milliseconds limit)
{
    CrashHandler::setTerminationCallback(std::move(callback), limit);
    say("ready\n");
    stayForever();
}

// A second thread crashes while the first one's crash is worked on.
void crashTwice()
{
    std::thread first(faultAt, 0x100);
    std::thread second(faultAt, 0x200);
    first.join();
    second.join();
}

class LockingSink
{
public:
    // Holds what a crashed thread may hold: the lock that the log takes.
    static void crashInTheLog()
    {
        Common::addLogSink(&sink());
        Common::logError("crash now");
    }

private:
    struct Sink : Common::LogSink
    {
        void onLogLine(int level, const std::string &) override
        {
            if (level == Common::LogLevel::error)
                fault();
        }
    };
    static Sink &sink()
    {
        static Sink instance;
        return instance;
    }
};

void quitWithinLimit()
{
    static std::atomic<bool> asked{false};
    CrashHandler::setTerminationCallback([] {
        asked = true;
        asked.notify_one();
    });
    say("ready\n");
    asked.wait(false);
    say("closing\n");
}

using Modes = std::map<std::string, std::function<void()>>;

Modes makeModes(char **arguments)
{
    const auto withHook = [](void (*other)(), void (*action)()) {
        return [other, action] {
            Utils::registerCrashHandler(other);
            CrashHandler::setHookLimit(shortLimit);
            action();
        };
    };
    return {
        {"segv", fault},
        {"segv-on-thread", [] { onThread(fault); }},
        {"overflow", [] { overflow(0); }},
        {"overflow-on-thread", [] { onThread([] { overflow(0); }); }},
        {"faulting-unwinder", [] { crashWith(fault); }},
        {"hanging-unwinder", [] { crashWith(stayForever); }},
        {"abort", [] { std::abort(); }},
        {"terminate", throwUncaught},
        {"sent-from-outside",
         [] {
             ::kill(::getpid(), SIGSEGV);
             stayForever();
         }},
        {"twice", crashTwice},
        {"in-the-log", withHook(hook, LockingSink::crashInTheLog)},
        {"hanging-hook", withHook(hangingHook, fault)},
        {"crashing-hook", withHook(crashingHook, fault)},
        {"throwing-hook", withHook(throwingHook, fault)},
        {"exiting-hook", withHook(exitingHook, fault)},
        {"no-hook", withHook(nullptr, fault)},
        {"emergency",
         [arguments] {
             armEmergencyStop(arguments);
             fault();
         }},
        {"emergency-hanging-hook",
         [arguments, withHook] {
             armEmergencyStop(arguments);
             withHook(hangingHook, fault)();
         }},
        {"quit", quitWithinLimit},
        {"quit-hangs",
         [] {
             waitForSignal(
                 [] {
                     say("closing\n");
                     stayForever();
                 },
                 shortLimit);
         }},
        {"quit-throws", [] { waitForSignal([] { throw std::runtime_error("no way"); }, shortLimit); }},
        {"quit-exits",
         [] {
             // The limit is long: with a sanitizer an exit takes its time.
             waitForSignal([] { std::exit(7); }, // NOLINT(concurrency-mt-unsafe): the point of the test
                           CrashHandler::defaultTerminationLimit);
         }},
        {"quit-cleared",
         [] {
             CrashHandler::setTerminationCallback([] { say("closing\n"); });
             waitForSignal({}, shortLimit);
         }},
        {"shutdown",
         [] {
             CrashHandler::shutdown();
             fault();
         }},
        {"setup-twice",
         [] {
             Utils::setupCrashHandler();
             CrashHandler::shutdown();
             Utils::setupCrashHandler();
             fault();
         }},
        {"normal", [] {}},
    };
}

} // namespace

// Stands before the system's function of that name, which looks at the stack of the calling thread.
extern "C" int backtrace(void **frames, int count)
{
    if (void (*const trouble)() = unwinderTrouble.load())
        trouble();
    static const auto original = reinterpret_cast<int (*)(void **, int)>(::dlsym(RTLD_NEXT, "backtrace"));
    return original ? original(frames, count) : 0;
}

int main(int argc, char **argv)
{
    const rlimit noCore{0, 0};
    ::setrlimit(RLIMIT_CORE, &noCore);
    Utils::registerCrashHandler(hook);
    Utils::setupCrashHandler();
    Common::logInit("logs/TZBench.log", Common::LogLevel::debug, 1, 1);
    Common::logStart(false);
    const Modes modes = makeModes(argv);
    const auto mode = argc > 1 ? modes.find(argv[1]) : modes.end();
    if (mode == modes.end())
        return 2;
    mode->second();
    return 0;
}
