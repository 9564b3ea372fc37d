// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/logging/RecorderTwins.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempWorkDir.h"
#include "tests/support/WaitFor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <charconv>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace tztest {

inline std::string textOf(const std::filesystem::path &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void writeText(const std::filesystem::path &path, const std::string &text)
{
    std::ofstream(path, std::ios::binary) << text;
}

inline std::vector<std::string> linesOfText(const std::string &text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

/// A frame that bears a producer as its channel and a number in its payload, so that it is known again in a file.
template <typename Twin> TzVciMessage numberedMessage(std::uint32_t number, std::uint8_t producer = 0)
{
    TzVciMessage message =
        Twin::message({static_cast<std::uint8_t>(number >> 24), static_cast<std::uint8_t>(number >> 16),
                       static_cast<std::uint8_t>(number >> 8), static_cast<std::uint8_t>(number)});
    message.channelIndex = producer;
    return message;
}

template <typename Twin>
std::vector<TzVciMessage> numberedMessages(std::uint32_t first, std::uint32_t count, std::uint8_t producer = 0)
{
    std::vector<TzVciMessage> messages;
    messages.reserve(count);
    for (std::uint32_t number = first; number < first + count; ++number)
        messages.push_back(numberedMessage<Twin>(number, producer));
    return messages;
}

/// One numbered frame as a CSV file holds it.
struct NumberedRecord
{
    std::string time;
    int producer = -1;
    std::uint32_t number = 0;
};

template <typename Twin> NumberedRecord readNumbered(const std::string &line)
{
    std::vector<std::string> cells;
    std::istringstream stream(line);
    for (std::string cell; std::getline(stream, cell, ',');)
        cells.push_back(cell);
    NumberedRecord record;
    if (cells.size() <= Twin::dataColumn)
        return record;
    std::string digits = cells[Twin::dataColumn];
    std::erase(digits, ' ');
    std::from_chars(digits.data(), digits.data() + digits.size(), record.number, 16);
    record.time = cells[0];
    record.producer = std::stoi(cells[1]) - 1;
    return record;
}

/// Recorders in a temporary working directory, with the log captured.
template <typename Twin> class RecorderFixture : public testing::Test
{
protected:
    using Logger = typename Twin::Logger;
    using Config = typename Twin::Config;

    static Config configOf(const std::string &path, int format = 1, int sizeLimitMb = 1)
    {
        Config config;
        config.filePath = path;
        config.format = format;
        config.sizeLimitMb = sizeLimitMb;
        return config;
    }
    /// Records to a file from its construction on, with device times as they are.
    struct StartedLogger : Logger
    {
        explicit StartedLogger(const std::string &path, int format = 1)
            : Logger(nullptr)
        {
            Logger::setConfig(configOf(path, format));
            EXPECT_EQ(Logger::start(), Common::LoggerResult::ok);
        }
    };
    /// Hands frames over that fill a file of 1 MiB: two batches, so that the flush thread begins a new one.
    static void fillFile(Logger &logger) { EXPECT_TRUE(logger.addMessages(numberedMessages<Twin>(0, fillCount))); }
    static constexpr std::uint32_t fillCount = Twin::framesOfAFile;

    /// Numbered records of the CSV files of a recording, kept ones first; checks each file's frame and first time.
    static std::vector<NumberedRecord> recordsOf(const std::string &path)
    {
        std::vector<NumberedRecord> records;
        const Common::RecordingPath names(path);
        for (int number = 1;; ++number) {
            const bool isKept = std::filesystem::exists(names.keptPath(number));
            const std::vector<std::string> lines = linesOfText(textOf(isKept ? names.keptPath(number) : path));
            EXPECT_FALSE(lines.empty());
            for (std::size_t i = 1; i < lines.size(); ++i)
                records.push_back(readNumbered<Twin>(lines[i]));
            EXPECT_TRUE(lines.size() < 2 || readNumbered<Twin>(lines[1]).time == "0.000000") << lines[1];
            if (!isKept)
                return records;
        }
    }
    static std::string openFailed(const std::string &path) { return fmt::format(fmt::runtime(Twin::openFailed), path); }
    static std::string renameFailed(const std::string &from, const std::string &to, std::errc error)
    {
        return fmt::format(fmt::runtime(Twin::renameFailed), from, to, std::make_error_code(error).message());
    }

    TempWorkDir workDir;
    LogCapture log;
};

} // namespace tztest
