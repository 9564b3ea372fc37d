// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/CrashRoad.h"

#include "common/EmergencyStop.h"
#include "common/Log.h"
#include "common/Thread.h"
#include "common/platform/FatalSignals.h"
#include "common/platform/LocalTime.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <cstdlib>
#include <cstring>
#include <system_error>

namespace Common {

namespace {

constexpr std::chrono::milliseconds backtraceLimit{500}; // a thread that crashed inside the unwinder never delivers

// The road that is open to signal handlers; null before the start and after the stop.
std::atomic<CrashRoad *> activeRoad{nullptr};

// Calls what belongs to others; an exception becomes a log line.
template <typename Function> void callGuarded(const char *what, const Function &function)
{
    try {
        function();
    } catch (const std::exception &error) {
        logError("Exception in the {}: {}", what, error.what());
    } catch (...) {
        logError("Unknown exception in the {}", what);
    }
}

void describeCurrentException(std::span<char> text)
{
    const auto write = [&](const char *what) {
        const auto end = fmt::format_to_n(text.data(), text.size() - 1, "{}", what);
        *end.out = '\0';
    };
    const std::exception_ptr exception = std::current_exception();
    if (!exception)
        return write("terminated without an exception");
    try {
        std::rethrow_exception(exception);
    } catch (const std::exception &error) {
        write(error.what());
    } catch (...) {
        write("unknown exception");
    }
}

} // namespace

CrashRoad &CrashRoad::instance()
{
    static CrashRoad road;
    return road;
}

CrashRoad::~CrashRoad()
{
    stop();
}

void CrashRoad::start()
{
    const std::lock_guard lock(m_mutex);
    if (m_started)
        return;
    m_utcOffset = std::chrono::seconds(platform::utcOffsetSeconds());
    platform::primeBacktrace();
    platform::useAlternateSignalStack();
    m_quit.store(false);
    try {
        m_watcher = std::thread(&CrashRoad::watch, this);
        m_hookRunner = std::thread(&CrashRoad::runHook, this);
    } catch (const std::system_error &) {
        joinAll();
        throw;
    }
    activeRoad.store(this);
    if (!platform::installFatalSignals(&CrashRoad::onFatalSignal)) {
        activeRoad.store(nullptr);
        joinAll();
        throw std::system_error(errno, std::generic_category(), "sigaction");
    }
    m_previousTerminate = std::set_terminate(&CrashRoad::onTerminate);
    m_started = true;
}

void CrashRoad::stop()
{
    const long self = platform::thisThreadId();
    if (self == m_hookRunnerId.load() || self == m_crashedThread.load())
        return; // exit() on the road itself: nobody could join this thread
    if (m_crashedThread.load() != 0)
        platform::parkForever(); // a crash is under way on another thread: let it end as a crash, not as an exit
    const std::lock_guard lock(m_mutex);
    if (!m_started)
        return;
    stopTermination();
    std::set_terminate(m_previousTerminate);
    platform::restoreFatalSignals();
    activeRoad.store(nullptr);
    joinAll();
    m_started = false;
}

void CrashRoad::joinAll()
{
    m_quit.store(true);
    m_crashed.set();
    m_hookWanted.set();
    for (std::thread *thread : {&m_watcher, &m_hookRunner}) {
        if (thread->joinable())
            thread->join();
    }
}

void CrashRoad::setTermination(std::function<void()> callback, std::chrono::milliseconds limit)
{
    const std::lock_guard lock(m_mutex);
    stopTermination();
    if (!callback)
        return;
    if (!m_started)
        throw std::logic_error("the crash handler is not set up");
    m_termination = std::move(callback);
    m_terminationLimit.store(limit);
    m_terminator = std::thread(&CrashRoad::runTermination, this);
    m_terminates = true;
    if (!platform::installTerminationSignals(&CrashRoad::onTerminationSignal)) {
        const int error = errno;
        stopTermination();
        throw std::system_error(error, std::generic_category(), "sigaction");
    }
}

void CrashRoad::stopTermination()
{
    if (!m_terminates)
        return;
    platform::restoreTerminationSignals();
    m_quitTermination.store(true);
    m_terminationWanted.set();
    if (m_terminator.get_id() == std::this_thread::get_id())
        m_terminator.detach(); // the callback itself ends the process
    else if (m_terminator.joinable())
        m_terminator.join();
    m_quitTermination.store(false);
    m_terminationWanted.wait(std::chrono::milliseconds(0)); // a second signal may have left it set
    m_terminates = false;
}

// --- In signal context, or on a thread that is about to end the process ---

void CrashRoad::onFatalSignal(int signal)
{
    if (CrashRoad *const road = activeRoad.load())
        road->travel(signal, false);
}

void CrashRoad::onTerminationSignal(int signal)
{
    if (CrashRoad *const road = activeRoad.load()) {
        road->m_terminationSignal.store(signal);
        road->m_terminationAsked.set();
    }
}

void CrashRoad::onTerminate()
{
    if (CrashRoad *const road = activeRoad.load())
        road->travel(platform::abortSignal(), true);
    std::abort();
}

// Looks at its own stack only when the watcher asks for it, at the very end: on a broken stack the unwinder may fault,
// which ends the process at once, or wait for ever on a lock that this thread held when it crashed. By then the boxes
// are silent and the hook has run.
void CrashRoad::travel(int signal, bool fromTerminate)
{
    const long self = platform::thisThreadId();
    if (self == m_watcherId.load())
        return; // nobody is left to go the road
    if (self == m_hookRunnerId.load()) {
        m_hookEnded.set(); // the hook itself crashed: the watcher goes on without it
        platform::parkForever();
    }
    long none = 0;
    if (!m_crashedThread.compare_exchange_strong(none, self)) {
        if (none == self)
            return; // crashed again on the road, or std::abort() behind std::terminate
        platform::parkForever();
    }
    if (fromTerminate)
        describeCurrentException(m_reason); // no signal context here
    m_crashSignal.store(signal);
    m_crashed.set();
    m_framesWanted.wait();
    m_frameCount.store(platform::captureBacktrace(m_frames));
    m_framesCaptured.set();
    m_roadEnded.wait();
}

// --- The watcher: takes no lock and allocates nothing from the first event on ---

void CrashRoad::watch()
{
    setThreadName("tz-crash");
    m_watcherId.store(platform::thisThreadId());
    const std::array<platform::WakeEvent *, 2> events{&m_crashed, &m_terminationAsked};
    for (;;) {
        const int event = platform::WakeEvent::waitAny(events, timeToTermination());
        if (event == 0) {
            if (const int signal = m_crashSignal.load()) {
                walk(signal, true);
                if (!reportFrames())
                    platform::dieBySignal(signal); // the crashed thread comes back no more
                m_roadEnded.set();
                platform::parkForever(); // the crashed thread ends the process
            }
            if (m_quit.load())
                break;
        } else if (event == 1) {
            if (!m_terminationDeadline)
                m_terminationDeadline = Clock::now() + m_terminationLimit.load();
            m_terminationWanted.set();
        } else if (m_terminationDeadline && Clock::now() >= *m_terminationDeadline) {
            const int signal = m_terminationSignal.load();
            walk(signal, false);
            platform::dieBySignal(signal);
        }
    }
    m_watcherId.store(0);
}

std::chrono::milliseconds CrashRoad::timeToTermination() const
{
    if (!m_terminationDeadline)
        return platform::WakeEvent::noLimit;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*m_terminationDeadline - Clock::now());
    return std::max(left, std::chrono::milliseconds(0));
}

void CrashRoad::walk(int signal, bool isCrash)
{
    EmergencyStop::fire();
    m_hookWanted.set();
    const bool hookEnded = m_hookEnded.wait(m_hookLimit.load());
    report(signal, hookEnded, isCrash);
}

void CrashRoad::report(int signal, bool hookEnded, bool isCrash)
{
    const auto now = std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now() + m_utcOffset);
    const auto day = std::chrono::floor<std::chrono::days>(now);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(now - day);
    std::array<char, 640> text{};
    fmt::format_to_n(
        text.data(), text.size() - 1, "{:04}-{:02}-{:02} {:02}:{:02}:{:02}.{:03} [error] {} {}{}{}{}\n",
        static_cast<int>(date.year()), static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
        time.hours().count(), time.minutes().count(), time.seconds().count(), time.subseconds().count(),
        isCrash ? "Fatal signal" : "Not ended in time after", platform::signalName(signal), m_reason[0] ? ": " : "",
        m_reason.data(), hookEnded ? "" : " (the crash hook did not end in time)");
    platform::writeCrashReport(detail::crashReportPath(), text.data(), {});
}

// False where the crashed thread does not deliver in time.
bool CrashRoad::reportFrames()
{
    m_framesWanted.set();
    if (!m_framesCaptured.wait(backtraceLimit))
        return false;
    const auto count = static_cast<std::size_t>(std::max(m_frameCount.load(), 0));
    platform::writeCrashReport(detail::crashReportPath(), "", std::span(m_frames).first(count));
    return true;
}

// --- The threads that run what belongs to others ---

void CrashRoad::runHook()
{
    setThreadName("tz-crash-hook");
    m_hookRunnerId.store(platform::thisThreadId());
    m_hookWanted.wait();
    if (!m_quit.load()) {
        if (void (*const hook)() = m_hook.load())
            callGuarded("crash hook", hook);
        callGuarded("end of the log", logStop); // a hook that threw may not have come to it
        m_hookEnded.set();
        platform::parkForever();
    }
    m_hookRunnerId.store(0);
}

void CrashRoad::runTermination()
{
    setThreadName("tz-terminate");
    m_terminationWanted.wait();
    if (!m_quitTermination.load())
        callGuarded("termination callback", m_termination);
}

} // namespace Common
