// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/LINLogger.h"

#include "logging/LinRecordLines.h"

namespace Common {

LINLogger::LINLogger(const UnifiedTimeManager *unifiedTime)
    : FrameLogger(texts, unifiedTime)
{
}

void LINLogger::setConfig(const LINLoggerConfig &config)
{
    configure(config.filePath, config.sizeLimitMb, config.absoluteTime, makeLinRecordFormatter(config));
}

const FrameLogger::Texts LINLogger::texts{
    .threadName = "lin-logger",
    .owner = "LINLogger",
    .configRefused = "Cannot change LINLogger config while running",
    .alreadyRunning = "LINLogger already running",
    .noPath = "LINLogger file path not set",
    .openFailed = "Failed to open LIN log file: {}",
    .renameFailed = "Failed to rename LIN log file: {} -> {}, error: {}",
    .threadStarted = "LIN logger flush thread started",
    .threadStopped = "LIN logger flush thread stopped",
};

} // namespace Common
