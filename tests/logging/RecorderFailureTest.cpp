// SPDX-License-Identifier: GPL-3.0-or-later
// Files that cannot be opened, reopened or written.
#include "tests/logging/LockFailure.h"
#include "tests/logging/RecorderFixture.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace {

template <typename Twin> class RecorderFailure : public tztest::RecorderFixture<Twin>
{
protected:
    void expectOpenFailure(const std::string &path)
    {
        const std::size_t before = this->log.lines().size();
        typename Twin::Logger logger(nullptr);
        logger.setConfig(this->configOf(path));
        EXPECT_EQ(logger.start(), Common::LoggerResult::openFailed);
        EXPECT_FALSE(logger.isRunning());
        EXPECT_FALSE(logger.addMessage(tztest::numberedMessage<Twin>(1)));
        EXPECT_EQ(this->log.count(3, this->openFailed(path)), 1u);
        EXPECT_EQ(this->log.lines().size(), before + 1);
    }

    /// Brings a running logger whose path is logs/run.csv to where it cannot open its next file.
    void loseFile(typename Twin::Logger &logger)
    {
        std::filesystem::rename("logs", "away");
        tztest::writeText("logs", "a file where the folder was");
        this->fillFile(logger);
        EXPECT_TRUE(tztest::waitFor([&] { return this->log.has(3, this->openFailed("logs/run.csv")); }));
    }
};
TYPED_TEST_SUITE(RecorderFailure, tztest::RecorderTwins, tztest::TwinNames);

using Common::LoggerResult::ok;
using Common::LoggerResult::openFailed;
using tztest::linesOfText;
using tztest::numberedMessage;
using tztest::numberedMessages;
using tztest::textOf;
using tztest::writeText;

TYPED_TEST(RecorderFailure, APathThatIsAFolder)
{
    std::filesystem::create_directory("run.csv");
    this->expectOpenFailure("run.csv");
    EXPECT_TRUE(std::filesystem::is_directory("run.csv"));
}

TYPED_TEST(RecorderFailure, AFolderThatCannotBeMade)
{
    writeText("logs", "a file");
    this->expectOpenFailure("logs/run.csv");
    EXPECT_EQ(textOf("logs"), "a file");
}

TYPED_TEST(RecorderFailure, AFolderThatTakesNoFiles)
{
    this->expectOpenFailure("/proc/self/run.csv");
}

TYPED_TEST(RecorderFailure, APipeWithoutAReaderDoesNotHoldTheCaller)
{
    ASSERT_EQ(::mkfifo("run.csv", 0600), 0);
    this->expectOpenFailure("run.csv");
}

TYPED_TEST(RecorderFailure, ADeviceIsNoRecording)
{
    this->expectOpenFailure("/dev/null");
}

TYPED_TEST(RecorderFailure, AFileThatAnotherRecorderHoldsIsLeftAsItIs)
{
    typename TestFixture::Logger first(nullptr);
    first.setConfig(this->configOf("run.csv"));
    ASSERT_EQ(first.start(), ok);
    first.addMessages(numberedMessages<TypeParam>(0, 10));
    ASSERT_TRUE(tztest::waitFor([] { return linesOfText(textOf("run.csv")).size() == 11; }));
    typename TestFixture::Logger second(nullptr);
    second.setConfig(this->configOf("run.csv"));
    EXPECT_EQ(second.start(), openFailed);
    EXPECT_TRUE(this->log.has(3, this->openFailed("run.csv")));
    first.stop();
    EXPECT_EQ(this->recordsOf("run.csv").size(), 10u);
    EXPECT_EQ(second.start(), ok); // free again
    second.stop();
}

TYPED_TEST(RecorderFailure, AFileThatAnotherProgramHoldsIsLeftAsItIs)
{
    writeText("run.csv", "of another program");
    const int other = ::open("run.csv", O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(other, LOCK_EX | LOCK_NB), 0);
    this->expectOpenFailure("run.csv");
    EXPECT_EQ(textOf("run.csv"), "of another program");
    ::close(other);
}

TYPED_TEST(RecorderFailure, AFileSystemThatKnowsNoLocksIsWrittenWithout)
{
    for (const int error : {ENOSYS, EOPNOTSUPP, ENOLCK}) {
        const tztest::LockFailure noLocks(error);
        typename TestFixture::Logger logger(nullptr);
        logger.setConfig(this->configOf("run.csv"));
        ASSERT_EQ(logger.start(), ok) << error;
        this->fillFile(logger);
        EXPECT_TRUE(tztest::waitFor([] { return std::filesystem::exists("run.1.csv"); }));
        logger.stop();
        EXPECT_EQ(this->recordsOf("run.csv").size(), this->fillCount);
        std::filesystem::remove("run.1.csv");
    }
    const tztest::LockFailure broken(EIO);
    this->expectOpenFailure("other.csv");
}

TYPED_TEST(RecorderFailure, ChineseCharactersAndBlanksInThePath)
{
    const std::string path = "记录 文件夹/总线 测试 一.csv";
    typename TestFixture::StartedLogger logger(path);
    this->fillFile(logger);
    EXPECT_TRUE(tztest::waitFor([] { return std::filesystem::exists("记录 文件夹/总线 测试 一.1.csv"); }));
    logger.stop();
    EXPECT_EQ(this->recordsOf(path).size(), this->fillCount);
}

TYPED_TEST(RecorderFailure, AFailedReopenLeavesTheLoggerRunningAndTheKeptFileWhole)
{
    typename TestFixture::StartedLogger logger("logs/run.csv");
    this->loseFile(logger);
    EXPECT_TRUE(logger.isRunning());
    EXPECT_TRUE(logger.addMessage(numberedMessage<TypeParam>(1)));
    logger.stop();
    EXPECT_GE(std::filesystem::file_size("away/run.csv"), 1u << 20);
    const auto records = this->recordsOf("away/run.csv");
    for (std::uint32_t i = 0; i < records.size(); ++i)
        ASSERT_EQ(records[i].number, i);
    EXPECT_EQ(this->log.count(3, TypeParam::dropped), 0u);
}

TYPED_TEST(RecorderFailure, ARestartDiscardsWhatWaitedWithoutAFile)
{
    typename TestFixture::StartedLogger logger("logs/run.csv");
    this->loseFile(logger);
    logger.addMessages(numberedMessages<TypeParam>(500'000, 50'000));
    logger.stop();
    std::filesystem::remove("logs");
    ASSERT_EQ(logger.start(), ok);
    logger.addMessages(numberedMessages<TypeParam>(900'000, 3));
    logger.stop();
    const auto records = this->recordsOf("logs/run.csv");
    ASSERT_EQ(records.size(), 3u);
    EXPECT_EQ(records[0].number, 900'000u);
}

TYPED_TEST(RecorderFailure, WithoutAFileAHundredThousandFramesAreKeptAndTheDropIsToldOnce)
{
    typename TestFixture::StartedLogger logger("logs/run.csv");
    this->loseFile(logger);
    const auto messages = numberedMessages<TypeParam>(0, 100'000);
    const auto left = static_cast<std::size_t>(logger.waitingRecords()); // of those that filled the file
    EXPECT_TRUE(logger.addMessages({messages.data(), messages.size() - left}));
    EXPECT_EQ(logger.waitingRecords(), 100'000);
    EXPECT_EQ(this->log.count(3, TypeParam::dropped), 0u);
    EXPECT_TRUE(logger.addMessage(messages[0])); // taken, but dropped
    EXPECT_TRUE(tztest::waitFor([&] { return this->log.has(3, TypeParam::dropped); }));
    for (int i = 0; i < 30; ++i)
        EXPECT_TRUE(logger.addMessages(messages));
    EXPECT_EQ(logger.waitingRecords(), 100'000);
    logger.stop();
    EXPECT_EQ(this->log.count(3, TypeParam::dropped), 1u);
}

TYPED_TEST(RecorderFailure, FramesThatWaitWhenTheFileIsLostAreCutToTheLimit)
{
    typename TestFixture::StartedLogger logger("logs/run.csv");
    std::filesystem::rename("logs", "away");
    writeText("logs", "a file where the folder was");
    EXPECT_TRUE(logger.addMessages(numberedMessages<TypeParam>(0, 300'000))); // the first of which fill the file
    EXPECT_TRUE(tztest::waitFor([&] { return this->log.has(3, TypeParam::dropped); }));
    EXPECT_EQ(logger.waitingRecords(), 100'000);
    logger.stop();
}

} // namespace
