// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>

namespace Common {

/// The process-wide settings of the log, kept in config/tzbench.ini. Read when constructed; a missing file means the
/// defaults, an unreadable or invalid value its default. Lives on the UI thread.
class ConfigManager
{
public:
    static ConfigManager &getInstance();
    /// Settings of a file of one's own; the instance takes config/tzbench.ini.
    explicit ConfigManager(const QString &filePath);

    /// Full path of the current log file: logDirectory as it is when it ends in ".log", otherwise with "/TZBench.log"
    /// behind; of an empty one, that of the default.
    QString getLogFilePath() const;
    /// Persists the fields; a failure is an error in the log.
    void saveConfig();

    bool logConsoleOnly = false;     ///< true: log to the console only
    std::uint8_t logLevel = 1;       ///< 0 Debug, 1 Info, 2 Warning, 3 Error, 4 no logging
    std::uint8_t logFileSizeMb = 10; ///< MiB at which a new log file is begun; 0 is kept, and the log counts it as 1
    std::uint8_t maxLogFiles = 5;    ///< log files kept; likewise
    QString logDirectory = QStringLiteral("logs"); ///< a directory, or a file whose name ends in ".log"

private:
    void loadConfig();

    QString m_filePath;
};

} // namespace Common
