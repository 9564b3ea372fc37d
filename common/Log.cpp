// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/Log.h"

#include "common/LogBackend.h"
#include "common/LogSink.h"
#include "common/Utils.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string_view>
#include <vector>

namespace Common {

namespace detail {
std::atomic<int> lowestLoggedLevel{LogLevel::info};
} // namespace detail

namespace {

constexpr std::array<const char *, 4> levelNames{"debug", "info", "warning", "error"};
std::atomic<const char *> crashPath{nullptr};

// A console that takes nothing, as one that was closed, costs the line and not the caller.
void writeToConsole(int level, const std::string &text)
{
    const std::string line = fmt::format("{} [{}] {}\n", Utils::getCurrentTimeStringFast(),
                                         levelNames[static_cast<std::size_t>(level)], text);
    [[maybe_unused]] const std::size_t written = std::fwrite(line.data(), 1, line.size(), stderr);
}

class LogCore
{
public:
    static LogCore &instance();

    void init(const LogSettings &settings);
    void start(bool consoleOnly);
    void stop();
    void write(int level, const std::string &text);
    void addSink(LogSink *sink);
    void removeSink(LogSink *sink);

private:
    void open(bool consoleOnly);
    void replaceBackend(std::unique_ptr<LogBackend> backend);
    void setLevel(int level);
    void updateLowestLevel();
    void rememberPath();

    std::mutex m_control; // one start or stop at a time; protects m_settings and m_paths
    LogSettings m_settings;
    std::array<std::string, 2> m_paths; // the one before stays for a crash report that is being written
    std::size_t m_currentPath = 0;

    std::shared_mutex m_backendLock; // protects m_backend; held shared for the length of one enqueue
    std::unique_ptr<LogBackend> m_backend;
    std::atomic<bool> m_started{false}; // tested before the lock, so that a stop is not starved by a flood of lines

    std::shared_mutex m_sinkLock; // protects m_sinks; held shared while a line is told to them
    std::vector<LogSink *> m_sinks;
    std::atomic<bool> m_hasSinks{false};
    std::atomic<int> m_level{LogLevel::info};
};

LogCore &LogCore::instance()
{
    // Never destroyed, so that objects that outlive main() may still log; the exit handler, registered before those of
    // later objects and thus run after them, writes out what waits.
    static LogCore *const core = [] {
        std::atexit([] { logStop(); });
        return new LogCore;
    }();
    return *core;
}

void LogCore::init(const LogSettings &settings)
{
    const std::lock_guard lock(m_control);
    m_settings = settings;
}

void LogCore::start(bool consoleOnly)
{
    const std::lock_guard lock(m_control);
    replaceBackend(nullptr); // closes the file before it is opened again
    setLevel(m_settings.level);
    if (m_settings.level == LogLevel::none)
        return;
    try {
        open(consoleOnly);
    } catch (...) {
        replaceBackend(LogBackend::openConsole(m_settings.level));
        throw;
    }
}

void LogCore::open(bool consoleOnly)
{
    if (consoleOnly) {
        replaceBackend(LogBackend::openConsole(m_settings.level));
        return;
    }
    replaceBackend(LogBackend::openFile(m_settings));
    rememberPath();
}

void LogCore::stop()
{
    const std::lock_guard lock(m_control);
    replaceBackend(nullptr);
}

// The old backend works off its queue here, outside the lock, so that nobody who logs meanwhile waits.
void LogCore::replaceBackend(std::unique_ptr<LogBackend> backend)
{
    m_started.store(false);
    const bool starts = backend != nullptr;
    {
        const std::unique_lock lock(m_backendLock);
        std::swap(m_backend, backend);
    }
    m_started.store(starts);
}

void LogCore::rememberPath()
{
    m_currentPath = 1 - m_currentPath;
    std::error_code error;
    const auto absolute = std::filesystem::absolute(m_settings.path, error);
    m_paths[m_currentPath] = error ? m_settings.path : absolute.string();
    crashPath.store(m_paths[m_currentPath].c_str());
}

void LogCore::write(int level, const std::string &text)
{
    const bool hasSinks = m_hasSinks.load();
    if (hasSinks) {
        const std::shared_lock lock(m_sinkLock);
        for (LogSink *sink : m_sinks)
            sink->onLogLine(level, text);
    }
    if (level < m_level.load(std::memory_order_relaxed))
        return;
    if (m_started.load()) {
        const std::shared_lock lock(m_backendLock);
        if (m_backend) {
            m_backend->write(level, text);
            return;
        }
    }
    if (!hasSinks)
        writeToConsole(level, text);
}

void LogCore::addSink(LogSink *sink)
{
    const std::unique_lock lock(m_sinkLock);
    m_sinks.push_back(sink);
    updateLowestLevel();
}

void LogCore::removeSink(LogSink *sink)
{
    const std::unique_lock lock(m_sinkLock);
    m_sinks.erase(std::remove(m_sinks.begin(), m_sinks.end(), sink), m_sinks.end());
    updateLowestLevel();
}

void LogCore::setLevel(int level)
{
    const std::unique_lock lock(m_sinkLock);
    m_level.store(level);
    updateLowestLevel();
}

void LogCore::updateLowestLevel()
{
    m_hasSinks.store(!m_sinks.empty());
    detail::lowestLoggedLevel.store(m_sinks.empty() ? m_level.load() : LogLevel::debug);
}

} // namespace

void logInit(const std::string &path, int level, int fileSizeMb, int maxFiles)
{
    LogSettings settings;
    settings.path = path;
    settings.level = level < LogLevel::debug || level > LogLevel::none ? LogLevel::info : level;
    settings.fileSizeMb = static_cast<std::size_t>(std::max(fileSizeMb, 1));
    settings.maxFiles = static_cast<std::size_t>(std::max(maxFiles, 1));
    LogCore::instance().init(settings);
}

void logStart(bool consoleOnly)
{
    LogCore::instance().start(consoleOnly);
}

void logStop()
{
    LogCore::instance().stop();
}

void logSoftwareInfo(const std::string &name, const std::string &version, const std::string &author,
                     const std::string &platform)
{
    logInfo("========== {} {} | {} | {} ==========", name, version, author, platform);
}

void logRawString(int level, std::string &&text)
{
    if (level >= LogLevel::debug && shouldLogLevel(level))
        LogCore::instance().write(level, text);
}

void addLogSink(LogSink *sink)
{
    LogCore::instance().addSink(sink);
}

void removeLogSink(LogSink *sink)
{
    LogCore::instance().removeSink(sink);
}

void ensureLog()
{
    LogCore::instance();
}

void detail::writeDebugHex(std::string &&label, const void *data, std::size_t size)
{
    label.reserve(label.size() + 3 * size);
    if (data && size > 0) {
        label += ' ';
        label += Utils::bytesToHexStringUpper(static_cast<const unsigned char *>(data), size);
    }
    logRawString(LogLevel::debug, std::move(label));
}

const char *detail::crashReportPath() noexcept
{
    return crashPath.load();
}

} // namespace Common
