// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace Common {

/// Hears every log line of the process, whatever level the log is set to, beside the log's file or console.
class LogSink
{
public:
    virtual ~LogSink() = default;
    /// Called synchronously on the thread that logs, from any thread and from several at a time. Must return quickly
    /// and must neither log, nor add or remove a sink.
    virtual void onLogLine(int level, const std::string &text) = 0;
};

/// The sink stays its owner's, who removes it before it dies. While there is a sink every level is logged to it.
void addLogSink(LogSink *sink);
/// No call into the sink is running or comes once this has returned.
void removeLogSink(LogSink *sink);

/// Makes the process-wide log, where nothing has been logged yet. A process-wide object that logs while it is destroyed
/// calls this in its constructor, so that the log outlives it.
void ensureLog();

} // namespace Common
