// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <fmt/format.h>

#include <atomic>
#include <cstddef>
#include <string>
#include <utility>

/// The log of the process. Levels: 0 debug, 1 info, 2 warning, 3 error; 4 as a setting means no logging.
///
/// Threads: every function may be called from any thread. Writing never waits for the disk: lines go through a bounded
/// queue to a thread of the log; when the queue is full the oldest lines are dropped, and one warning tells how many.
namespace Common {

namespace LogLevel {
inline constexpr int debug = 0;
inline constexpr int info = 1;
inline constexpr int warning = 2;
inline constexpr int error = 3;
inline constexpr int none = 4; ///< a setting only: nothing is logged
} // namespace LogLevel

namespace detail {
extern std::atomic<int> lowestLoggedLevel; // 4 and above: no line is taken at all
void writeDebugHex(std::string &&label, const void *data, std::size_t size);
/// Absolute path of the file last started, null when there was none. Takes no lock; for the crash report.
const char *crashReportPath() noexcept;
} // namespace detail

/// Stores the settings that the next logStart() takes; touches no file and throws nothing for a setting.
/// @param path        the log file, UTF-8; its directory is made by logStart()
/// @param level       0 to 4; any other value counts as 1
/// @param fileSizeMb  size in MiB at which a new file is begun; below 1 counts as 1
/// @param maxFiles    files kept, the current one included; below 1 counts as 1
void logInit(const std::string &path, int level, int fileSizeMb, int maxFiles);

/// Starts the log, anew if it runs already. Until then, and where it throws, lines go to the console.
/// @throws std::exception where the file cannot be opened
void logStart(bool consoleOnly);

/// Writes out what waits and closes the file. Does nothing when not started.
void logStop();

/// Writes the banner of a program run, at info level.
void logSoftwareInfo(const std::string &name, const std::string &version, const std::string &author,
                     const std::string &platform);

/// True if a message of that level is logged; to be tested before formatting. Costs one load.
inline bool shouldLogLevel(int level)
{
    return level >= detail::lowestLoggedLevel.load(std::memory_order_relaxed) && level < LogLevel::none;
}

/// Writes one finished line. A level that is not logged is dropped here too.
void logRawString(int level, std::string &&text);

/// Writes the label, a blank and the bytes as upper-case hexadecimal pairs, at debug level.
inline void logDebugHex(std::string &&label, const void *data, std::size_t size)
{
    if (shouldLogLevel(LogLevel::debug))
        detail::writeDebugHex(std::move(label), data, size);
}

/// Tests the level, formats, writes.
template <typename... Args> void logFormatted(int level, fmt::format_string<Args...> text, Args &&...args)
{
    if (shouldLogLevel(level))
        logRawString(level, fmt::format(text, std::forward<Args>(args)...));
}
template <typename... Args> void logDebug(fmt::format_string<Args...> text, Args &&...args)
{
    logFormatted(LogLevel::debug, text, std::forward<Args>(args)...);
}
template <typename... Args> void logInfo(fmt::format_string<Args...> text, Args &&...args)
{
    logFormatted(LogLevel::info, text, std::forward<Args>(args)...);
}
template <typename... Args> void logWarning(fmt::format_string<Args...> text, Args &&...args)
{
    logFormatted(LogLevel::warning, text, std::forward<Args>(args)...);
}
template <typename... Args> void logError(fmt::format_string<Args...> text, Args &&...args)
{
    logFormatted(LogLevel::error, text, std::forward<Args>(args)...);
}

} // namespace Common
