// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/platform/FatalSignals.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include <execinfo.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Common::platform {

namespace {

constexpr std::size_t alternateStackSize = 64 * 1024; // room for the unwinder
constexpr std::array<int, 5> fatalSignals{SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};
constexpr std::array<int, 3> terminationSignals{SIGTERM, SIGINT, SIGHUP};

std::array<struct sigaction, fatalSignals.size()> previousFatal{};
std::array<struct sigaction, terminationSignals.size()> previousTermination{};
std::atomic<FatalSignalFunction> fatalFunction{nullptr};
std::atomic<FatalSignalFunction> terminationFunction{nullptr};

// The stack of one thread; ends with it.
class AlternateStack
{
public:
    bool use() noexcept
    {
        if (m_memory)
            return true;
        stack_t present{};
        if (::sigaltstack(nullptr, &present) == 0 && !(present.ss_flags & SS_DISABLE))
            return true; // somebody has given the thread one
        m_memory.reset(new (std::nothrow) char[alternateStackSize]);
        if (!m_memory)
            return false;
        stack_t stack{};
        stack.ss_sp = m_memory.get();
        stack.ss_size = alternateStackSize;
        if (::sigaltstack(&stack, nullptr) == 0)
            return true;
        m_memory.reset();
        return false;
    }
    ~AlternateStack()
    {
        if (!m_memory)
            return;
        stack_t none{};
        none.ss_flags = SS_DISABLE;
        ::sigaltstack(&none, nullptr);
    }
    AlternateStack() = default;
    AlternateStack(const AlternateStack &) = delete;
    AlternateStack &operator=(const AlternateStack &) = delete;

private:
    std::unique_ptr<char[]> m_memory;
};

void onFatalSignal(int signal)
{
    const int interrupted = errno;
    if (const auto function = fatalFunction.load())
        function(signal);
    // Back to what would have happened without us. The signal is blocked in here, so the raised one comes on return; a
    // faulting instruction would fault again by itself, a signal sent from outside would not.
    const auto at = std::find(fatalSignals.begin(), fatalSignals.end(), signal);
    if (at != fatalSignals.end())
        ::sigaction(signal, &previousFatal[static_cast<std::size_t>(at - fatalSignals.begin())], nullptr);
    ::raise(signal);
    errno = interrupted;
}

void onTerminationSignal(int signal)
{
    const int interrupted = errno;
    if (const auto function = terminationFunction.load())
        function(signal);
    errno = interrupted;
}

template <std::size_t count>
void restore(const std::array<int, count> &signals, const std::array<struct sigaction, count> &previous,
             std::size_t upTo)
{
    for (std::size_t i = 0; i < upTo; ++i)
        ::sigaction(signals[i], &previous[i], nullptr);
}

template <std::size_t count>
bool install(const std::array<int, count> &signals, std::array<struct sigaction, count> &previous, void (*handler)(int),
             int flags, bool keepIgnored)
{
    for (std::size_t i = 0; i < count; ++i) {
        struct sigaction action
        {
        };
        action.sa_handler = handler;
        action.sa_flags = flags;
        ::sigemptyset(&action.sa_mask);
        if (::sigaction(signals[i], nullptr, &previous[i]) != 0) {
            restore(signals, previous, i);
            return false;
        }
        if (keepIgnored && previous[i].sa_handler == SIG_IGN)
            continue;
        if (::sigaction(signals[i], &action, nullptr) != 0) {
            restore(signals, previous, i);
            return false;
        }
    }
    return true;
}

void writeText(int descriptor, const char *text)
{
    [[maybe_unused]] const auto written = ::write(descriptor, text, std::strlen(text)); // nothing left to do about it
}

void writeReport(int descriptor, const char *text, std::span<void *const> frames)
{
    writeText(descriptor, text);
    if (!frames.empty())
        ::backtrace_symbols_fd(frames.data(), static_cast<int>(frames.size()), descriptor);
}

} // namespace

bool useAlternateSignalStack() noexcept
{
    thread_local AlternateStack stack;
    return stack.use();
}

bool installFatalSignals(FatalSignalFunction function) noexcept
{
    fatalFunction.store(function);
    return install(fatalSignals, previousFatal, onFatalSignal, SA_ONSTACK, false);
}

void restoreFatalSignals() noexcept
{
    restore(fatalSignals, previousFatal, fatalSignals.size());
    fatalFunction.store(nullptr);
}

bool installTerminationSignals(FatalSignalFunction function) noexcept
{
    terminationFunction.store(function);
    return install(terminationSignals, previousTermination, onTerminationSignal, SA_ONSTACK | SA_RESTART, true);
}

void restoreTerminationSignals() noexcept
{
    restore(terminationSignals, previousTermination, terminationSignals.size());
    terminationFunction.store(nullptr);
}

void dieBySignal(int signal) noexcept
{
    struct sigaction standard
    {
    };
    standard.sa_handler = SIG_DFL;
    ::sigaction(signal, &standard, nullptr);
    sigset_t unblocked;
    ::sigemptyset(&unblocked);
    ::sigaddset(&unblocked, signal);
    ::pthread_sigmask(SIG_UNBLOCK, &unblocked, nullptr);
    ::raise(signal);
    ::_exit(128 + signal); // a signal whose default course is to be ignored
}

int abortSignal() noexcept
{
    return SIGABRT;
}

const char *signalName(int signal) noexcept
{
    switch (signal) {
    case SIGSEGV: return "SIGSEGV";
    case SIGBUS: return "SIGBUS";
    case SIGFPE: return "SIGFPE";
    case SIGILL: return "SIGILL";
    case SIGABRT: return "SIGABRT";
    case SIGTERM: return "SIGTERM";
    case SIGINT: return "SIGINT";
    case SIGHUP: return "SIGHUP";
    default: return "signal";
    }
}

long thisThreadId() noexcept
{
    return ::syscall(SYS_gettid);
}

void parkForever() noexcept
{
    for (;;)
        ::pause();
}

void primeBacktrace() noexcept
{
    std::array<void *, 1> frame{};
    ::backtrace(frame.data(), static_cast<int>(frame.size())); // loads the unwinder's library
}

int captureBacktrace(std::span<void *> frames) noexcept
{
    return ::backtrace(frames.data(), static_cast<int>(frames.size()));
}

void writeCrashReport(const char *path, const char *text, std::span<void *const> frames) noexcept
{
    writeReport(STDERR_FILENO, text, frames);
    if (!path)
        return;
    const int file = ::open(path, O_WRONLY | O_APPEND | O_CLOEXEC);
    if (file < 0)
        return;
    writeReport(file, text, frames);
    ::close(file);
}

} // namespace Common::platform
