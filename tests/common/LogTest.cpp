// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/Log.h"

#include "common/LogSink.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempWorkDir.h"
#include "tests/support/WaitFor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFile>
#include <QRegularExpression>

#include <array>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <future>
#include <sstream>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

constexpr const char *logFile = "logs/TZBench.log";

std::vector<std::string> linesOf(const std::string &path)
{
    std::vector<std::string> lines;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    return lines;
}

// The lines without their time.
std::vector<std::string> textsOf(const std::string &path)
{
    constexpr std::size_t timeLength = std::string_view("2025-05-07 14:30:22.123 ").size();
    std::vector<std::string> texts;
    for (const std::string &line : linesOf(path))
        texts.push_back(line.substr(std::min(timeLength, line.size())));
    return texts;
}

class Log : public testing::Test
{
protected:
    ~Log() override
    {
        Common::logStop();
        Common::logInit(logFile, Common::LogLevel::info, 1, 1);
        Common::logStart(true); // takes the default level over
        Common::logStop();
    }

    static void start(int level, bool consoleOnly = false)
    {
        Common::logInit(logFile, level, 10, 5);
        Common::logStart(consoleOnly);
    }
    static void writeOneOfEachLevel()
    {
        Common::logDebug("text {}", 0);
        Common::logInfo("text {}", 1);
        Common::logWarning("text {}", 2);
        Common::logError("text {}", 3);
    }

    tztest::TempWorkDir m_workDir;
};

TEST_F(Log, WritesLinesWithTimeLevelAndText)
{
    start(0);
    writeOneOfEachLevel();
    Common::logStop();
    EXPECT_THAT(textsOf(logFile), ElementsAre("[debug] text 0", "[info] text 1", "[warning] text 2", "[error] text 3"));
    const QRegularExpression form(
        QStringLiteral("^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3} \\[info\\] text 1$"));
    EXPECT_TRUE(form.match(QString::fromStdString(linesOf(logFile).at(1))).hasMatch()) << linesOf(logFile).at(1);
}

TEST_F(Log, StartMakesTheFolderAndInitTouchesNothing)
{
    Common::logInit("some/where/deep/x.log", 1, 1, 1);
    EXPECT_FALSE(std::filesystem::exists("some"));
    Common::logStart(false);
    EXPECT_TRUE(std::filesystem::exists("some/where/deep/x.log"));
}

struct LevelCase
{
    int setting;
    int lowestLogged; // 4: none
};

class LogLevels : public Log, public testing::WithParamInterface<LevelCase>
{
};

TEST_P(LogLevels, LinesBelowTheSettingAreLeftOut)
{
    start(GetParam().setting);
    for (int level = 0; level <= 4; ++level)
        EXPECT_EQ(Common::shouldLogLevel(level), level >= GetParam().lowestLogged && level < 4) << level;
    writeOneOfEachLevel();
    Common::logRawString(0, "raw");
    Common::logStop();
    const auto expected = 4 - GetParam().lowestLogged + (GetParam().lowestLogged == 0 ? 1 : 0);
    EXPECT_EQ(linesOf(logFile).size(), static_cast<std::size_t>(expected));
}

INSTANTIATE_TEST_SUITE_P(Settings, LogLevels,
                         testing::Values(LevelCase{0, 0}, LevelCase{1, 1}, LevelCase{2, 2}, LevelCase{3, 3},
                                         LevelCase{4, 4}, LevelCase{5, 1}, LevelCase{255, 1}, LevelCase{-1, 1}));

TEST_F(Log, NoLoggingMakesNoFile)
{
    start(Common::LogLevel::none);
    EXPECT_FALSE(std::filesystem::exists("logs"));
}

TEST_F(Log, StopIsSafeWhenNotStarted)
{
    Common::logStop();
    Common::logStop();
}

TEST_F(Log, StartsAgainWithOtherSettings)
{
    start(1);
    Common::logInfo("first");
    Common::logStop();
    Common::logInit("other/second.log", 2, 1, 1);
    Common::logStart(false);
    Common::logInfo("left out");
    Common::logWarning("second");
    Common::logStop();
    EXPECT_THAT(textsOf(logFile), ElementsAre("[info] first"));
    EXPECT_THAT(textsOf("other/second.log"), ElementsAre("[warning] second"));
}

TEST_F(Log, AnotherRunAppends)
{
    start(1);
    Common::logInfo("first");
    Common::logStart(false); // while it runs
    Common::logInfo("second");
    Common::logStop();
    EXPECT_THAT(textsOf(logFile), ElementsAre("[info] first", "[info] second"));
}

TEST_F(Log, LinesReachTheFileWithoutAStop)
{
    start(1);
    Common::logInfo("at once");
    EXPECT_TRUE(tztest::waitFor([] { return linesOf(logFile).size() == 1; }));
}

TEST_F(Log, GoesToTheConsoleWhenNotStarted)
{
    testing::internal::CaptureStderr();
    Common::logInfo("not started");
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("[info] not started\n"));
}

TEST_F(Log, AConsoleThatTakesNothingDoesNotStopTheCaller)
{
    std::fflush(stderr);
    const int kept = ::dup(STDERR_FILENO);
    const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    ASSERT_GE(kept, 0);
    ASSERT_GE(full, 0);
    ASSERT_EQ(::dup2(full, STDERR_FILENO), STDERR_FILENO);
    EXPECT_NO_THROW(Common::logInfo("not started, and nowhere to go"));
    std::clearerr(stderr);
    ASSERT_EQ(::dup2(kept, STDERR_FILENO), STDERR_FILENO);
    ::close(full);
    ::close(kept);
}

TEST_F(Log, GoesToTheConsoleAloneWhenToldSo)
{
    testing::internal::CaptureStderr();
    start(1, true);
    Common::logInfo("console only");
    Common::logStop();
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("[info] console only\n"));
    EXPECT_FALSE(std::filesystem::exists("logs"));
}

TEST_F(Log, AStartThatFailsThrowsAndLinesGoToTheConsole)
{
    QFile inTheWay(QStringLiteral("logs"));
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    EXPECT_THROW(start(1), std::exception);
    testing::internal::CaptureStderr();
    Common::logInfo("after the failure");
    Common::logStop();
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("[info] after the failure\n"));
}

TEST_F(Log, AFileThatIsADirectoryThrows)
{
    std::filesystem::create_directories(logFile);
    EXPECT_THROW(start(1), std::exception);
}

TEST_F(Log, BannerNamesTheProgram)
{
    const tztest::LogCapture log;
    Common::logSoftwareInfo("TZBench", "v1.6.0", "zarnek", "windows");
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(log.lines()[0].level, 1);
    for (const char *part : {"TZBench", "v1.6.0", "zarnek", "windows"})
        EXPECT_THAT(log.lines()[0].text, HasSubstr(part));
}

TEST_F(Log, HexDumpFollowsItsLabel)
{
    const std::array<unsigned char, 3> bytes{0xAA, 0x55, 0x0F};
    {
        const tztest::LogCapture log;
        Common::logDebugHex("0 SD:", bytes.data(), bytes.size());
        Common::logDebugHex("empty:", nullptr, 0);
        EXPECT_TRUE(log.has(0, "0 SD: AA 55 0F"));
        EXPECT_TRUE(log.has(0, "empty:"));
    }
    start(1);
    Common::logDebugHex("0 SD:", bytes.data(), bytes.size());
    Common::logStop();
    EXPECT_THAT(linesOf(logFile), IsEmpty());
}

TEST_F(Log, SinksHearEveryLevelAndTheFileItsOwn)
{
    start(2);
    {
        const tztest::LogCapture log;
        EXPECT_TRUE(Common::shouldLogLevel(0));
        writeOneOfEachLevel();
        EXPECT_EQ(log.lines().size(), 4U);
    }
    EXPECT_FALSE(Common::shouldLogLevel(0));
    Common::logStop();
    EXPECT_EQ(linesOf(logFile).size(), 2U);
}

TEST_F(Log, KeepsNoMoreFilesThanToldAndNoneBeyondItsSize)
{
    Common::logInit(logFile, 1, 0, 3); // size 0 counts as 1
    Common::logStart(false);
    constexpr std::size_t mebibyte = 1024 * 1024;
    for (int i = 0; i < 90; ++i) {
        // 64 KiB lines, few enough at a time for the queue
        Common::logRawString(1, std::string(mebibyte / 16, 'x'));
    }
    Common::logStop();
    std::size_t files = 0;
    for (const auto &entry : std::filesystem::directory_iterator("logs")) {
        ++files;
        EXPECT_LE(entry.file_size(), mebibyte);
    }
    EXPECT_EQ(files, 3U);
}

// A disk that stands still is played by a pipe that nobody reads: whoever logs goes on, the oldest lines are lost, and
// one line tells how many.
TEST_F(Log, AFullQueueDropsTheOldestAndTellsHowMany)
{
    ASSERT_EQ(::mkfifo("pipe.log", 0600), 0);
    std::promise<void> mayRead;
    auto content = std::async(std::launch::async, [released = mayRead.get_future()]() mutable {
        std::ifstream pipe("pipe.log"); // the log's own opening waits for this one
        released.wait();
        std::vector<std::string> lines;
        for (std::string line; std::getline(pipe, line);)
            lines.push_back(line);
        return lines;
    });
    Common::logInit("pipe.log", 1, 255, 1);
    Common::logStart(false);
    constexpr std::size_t written = 30'000;
    for (std::size_t i = 0; i < written; ++i)
        Common::logInfo("line {}", i);
    mayRead.set_value();
    Common::logStop();
    const auto lines = content.get();
    std::vector<std::string> losses;
    for (const std::string &line : lines) {
        if (line.find("[warning] The log was overloaded") != std::string::npos)
            losses.push_back(line);
    }
    ASSERT_EQ(losses.size(), 1U);
    const std::size_t arrived = lines.size() - 1;
    EXPECT_THAT(losses[0], HasSubstr(fmt::format(": {} lines lost", written - arrived)));
    EXPECT_THAT(lines, testing::Contains(HasSubstr(fmt::format("line {}", written - 1)))); // the newest are kept
}

TEST_F(Log, ManyThreadsMayLogWhileItStartsAndStops)
{
    start(0);
    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&] {
            while (!stop) {
                Common::logDebug("from a thread");
                Common::logDebugHex("hex:", "abc", 3);
                std::this_thread::sleep_for(std::chrono::microseconds(50));
            }
        });
    }
    {
        const tztest::LogCapture log; // keeps what comes between a stop and a start off the console
        for (int i = 0; i < 20; ++i) {
            Common::logStop();
            start(i % 2);
        }
        start(0);
        EXPECT_TRUE(tztest::waitFor([] { return !linesOf(logFile).empty(); }));
        stop = true;
        for (std::thread &thread : threads)
            thread.join();
    }
}

} // namespace
