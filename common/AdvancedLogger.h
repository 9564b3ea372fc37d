// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <condition_variable>
#include <cstddef>
#include <fstream>
#include <mutex>
#include <string>
#include <thread>

namespace Common {

/// A file log of its own for one purpose, beside the log of the process: the bytes as they come, no time, no level.
///
/// Threads: logRawData() from any thread, never waits for the disk. One thread "tz-rawlog" of the object writes; stop()
/// and the destructor join it.
/// Errors: a file that cannot be opened or written is a line in the log; what comes after is dropped.
class AdvancedLogger
{
public:
    /// Opens the file for appending and makes its directory where missing.
    explicit AdvancedLogger(const std::string &filePath);
    ~AdvancedLogger();
    AdvancedLogger(const AdvancedLogger &) = delete;
    AdvancedLogger &operator=(const AdvancedLogger &) = delete;

    /// Appends the text; the caller brings the line end. Beyond 16 MiB that wait, data are dropped with one warning.
    void logRawData(std::string &&text);
    /// Writes out what waits and closes the file. May be called again; what is logged afterwards is dropped.
    void stop();

private:
    static constexpr std::size_t maxPending = 16U << 20;

    void writeLoop();

    std::mutex m_mutex; // protects m_pending, m_dropped, m_stopped
    std::condition_variable m_wake;
    std::string m_pending;
    std::size_t m_dropped = 0; // bytes since the last warning
    bool m_stopped = false;
    std::mutex m_joinMutex; // one stop() at a time joins
    std::ofstream m_file;   // the writer's alone while it runs
    std::thread m_writer;   // last: it uses all above
};

} // namespace Common
