// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace Common {

/// Settings of the log, in their valid ranges.
struct LogSettings
{
    std::string path;
    int level = 1;
    std::size_t fileSizeMb = 1;
    std::size_t maxFiles = 1;
};

/// The written side of the log: a bounded queue and the thread "tz-log" that empties it into a rotating file or to the
/// console. A full queue drops its oldest lines; once the queue is empty again, or after a second of overload, one
/// warning tells how many were lost, at most once a second and at the end. The destructor writes out what waits and
/// joins.
class LogBackend
{
public:
    /// @throws std::exception where the directory cannot be made or the file not be opened
    static std::unique_ptr<LogBackend> openFile(const LogSettings &settings);
    static std::unique_ptr<LogBackend> openConsole(int level);
    ~LogBackend();
    LogBackend(const LogBackend &) = delete;
    LogBackend &operator=(const LogBackend &) = delete;

    /// Any thread; never waits for the disk. A level below the settings' is left out.
    void write(int level, const std::string &text);

private:
    struct Impl;
    explicit LogBackend(std::unique_ptr<Impl> impl);

    std::unique_ptr<Impl> m_impl;
};

} // namespace Common
