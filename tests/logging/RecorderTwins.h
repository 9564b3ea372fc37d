// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/CANLogger.h"
#include "logging/LINLogger.h"
#include "tests/logging/RecordMessages.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace tztest {

/// The CAN and the LIN recorder behave alike; tests of the engine run for both.
struct CanTwin
{
    using Logger = Common::CANLogger;
    using Config = Common::CANLoggerConfig;
    static constexpr const char *configRefused = "Cannot change CANLogger config while running";
    static constexpr const char *alreadyRunning = "Logger already running";
    static constexpr const char *noPath = "File path not set";
    static constexpr const char *openFailed = "Failed to open file: {}";
    static constexpr const char *renameFailed = "Failed to rename file: {} -> {}, error: {}";
    static constexpr const char *threadStarted = "CAN logger flush thread started";
    static constexpr const char *threadStopped = "CAN logger flush thread stopped";
    static constexpr const char *dropped =
        "CANLogger has no open file: 100000 frames are kept, further ones are dropped";
    static constexpr std::size_t dataColumn = 6;           ///< of a CSV line
    static constexpr std::uint32_t framesOfAFile = 31'000; ///< fill 1 MiB once, whatever the form

    static TzVciMessage message(const std::vector<std::uint8_t> &data) { return canMessage(0x123, data); }
};

struct LinTwin
{
    using Logger = Common::LINLogger;
    using Config = Common::LINLoggerConfig;
    static constexpr const char *configRefused = "Cannot change LINLogger config while running";
    static constexpr const char *alreadyRunning = "LINLogger already running";
    static constexpr const char *noPath = "LINLogger file path not set";
    static constexpr const char *openFailed = "Failed to open LIN log file: {}";
    static constexpr const char *renameFailed = "Failed to rename LIN log file: {} -> {}, error: {}";
    static constexpr const char *threadStarted = "LIN logger flush thread started";
    static constexpr const char *threadStopped = "LIN logger flush thread stopped";
    static constexpr const char *dropped =
        "LINLogger has no open file: 100000 frames are kept, further ones are dropped";
    static constexpr std::size_t dataColumn = 7;
    static constexpr std::uint32_t framesOfAFile = 27'000;

    static TzVciMessage message(const std::vector<std::uint8_t> &data) { return linMessage(data); }
};

using RecorderTwins = testing::Types<CanTwin, LinTwin>;

struct TwinNames
{
    template <typename Twin> static std::string GetName(int) { return std::is_same_v<Twin, CanTwin> ? "Can" : "Lin"; }
};

} // namespace tztest
