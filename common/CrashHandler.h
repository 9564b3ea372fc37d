// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <functional>

/// The road of a dying process. A fatal signal (SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT) or std::terminate only wakes
/// the thread "tz-crash", which
///   1. fires EmergencyStop,
///   2. lets the thread "tz-crash-hook" run the crash hook and write out the log, and waits for it up to a limit,
///   3. writes a line that names the signal, and then the crashed thread's backtrace, behind the log file's end and to
///      the console; a backtrace that cannot be taken within half a second is left out,
///   4. lets the signal take the course it would have had without us.
/// Nothing on that road but the hook itself allocates or takes a lock that the crashed thread may hold.
namespace Common::CrashHandler {

inline constexpr std::chrono::milliseconds defaultHookLimit{5000};
inline constexpr std::chrono::milliseconds defaultTerminationLimit{10000};

/// The function that is called on a fatal fault, in normal context; null for none. It may be called while another
/// thread runs it, or a second time. Any thread.
void setHook(void (*hook)());
/// Time that the hook is waited for. Any thread.
void setHookLimit(std::chrono::milliseconds limit);

/// Starts the threads and installs the handlers; a second call does nothing. A failure is an error in the log, and the
/// process goes on without crash handling. Call it on the main thread, early.
void setup();

/// What SIGTERM, SIGINT and SIGHUP do: @p callback runs once, in normal context, on the thread "tz-terminate"; it may
/// call std::exit(). A process that still lives @p limit after the signal goes the road above and dies by that signal.
/// Needs setup(). An empty function gives the signals back to the system. Main thread.
void setTerminationCallback(std::function<void()> callback, std::chrono::milliseconds limit = defaultTerminationLimit);

/// Takes the handlers out and joins the threads. Done by itself at exit.
void shutdown();

} // namespace Common::CrashHandler
