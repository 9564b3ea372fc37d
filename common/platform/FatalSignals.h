// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <span>

/// Signals as the crash handler sees them. The handler functions passed in run in signal context: only what a signal
/// handler may do is allowed in them.
namespace Common::platform {

/// Gives the calling thread an alternate signal stack, once, until it ends. False where there is no memory.
bool useAlternateSignalStack() noexcept;

using FatalSignalFunction = void (*)(int signal);
/// Installs @p function for SIGSEGV, SIGBUS, SIGFPE, SIGILL and SIGABRT, on the alternate stack. When it returns, the
/// signal takes the course it had before. False: refused, nothing installed.
bool installFatalSignals(FatalSignalFunction function) noexcept;
void restoreFatalSignals() noexcept;
/// Installs @p function for SIGTERM, SIGINT and SIGHUP; a signal that the process was started with as ignored stays so.
bool installTerminationSignals(FatalSignalFunction function) noexcept;
void restoreTerminationSignals() noexcept;
/// Ends the process by the signal's default course. Async-signal-safe.
[[noreturn]] void dieBySignal(int signal) noexcept;
/// The signal that std::abort() raises.
int abortSignal() noexcept;
const char *signalName(int signal) noexcept; ///< "SIGSEGV"; "signal" for one not handled here

/// The calling thread's id, for comparison.
long thisThreadId() noexcept;
/// Stays in here until the process ends. Async-signal-safe.
[[noreturn]] void parkForever() noexcept;

/// Loads what captureBacktrace() needs, so that it allocates nothing later.
void primeBacktrace() noexcept;
/// Fills the return addresses of the calling thread. @return how many
int captureBacktrace(std::span<void *> frames) noexcept;
/// Writes a text and the frames' symbols, a line each, to the console and behind the end of the file; a null path
/// leaves the file out. Allocates nothing.
void writeCrashReport(const char *path, const char *text, std::span<void *const> frames) noexcept;

} // namespace Common::platform
