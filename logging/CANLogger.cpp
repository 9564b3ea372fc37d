// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/CANLogger.h"

#include "logging/CanRecordLines.h"

namespace Common {

CANLogger::CANLogger(const UnifiedTimeManager *unifiedTime)
    : FrameLogger(texts, unifiedTime)
{
}

void CANLogger::setConfig(const CANLoggerConfig &config)
{
    configure(config.filePath, config.sizeLimitMb, config.absoluteTime, makeCanRecordFormatter(config));
}

const FrameLogger::Texts CANLogger::texts{
    .threadName = "can-logger",
    .owner = "CANLogger",
    .configRefused = "Cannot change CANLogger config while running",
    .alreadyRunning = "Logger already running",
    .noPath = "File path not set",
    .openFailed = "Failed to open file: {}",
    .renameFailed = "Failed to rename file: {} -> {}, error: {}",
    .threadStarted = "CAN logger flush thread started",
    .threadStopped = "CAN logger flush thread stopped",
};

} // namespace Common
