// SPDX-License-Identifier: GPL-3.0-or-later
// Full files: kept under a number, and recording goes on.
#include "tests/logging/RecorderFixture.h"

#include <limits>
#include <map>
#include <mutex>
#include <thread>

namespace {

template <typename Twin> class RecorderRotation : public tztest::RecorderFixture<Twin>
{
protected:
    /// Hands over what fills a file, and waits until it was kept.
    void rotate(typename Twin::Logger &logger, const std::string &kept)
    {
        this->fillFile(logger);
        EXPECT_TRUE(tztest::waitFor([&] { return std::filesystem::exists(kept); }));
    }
};
TYPED_TEST_SUITE(RecorderRotation, tztest::RecorderTwins, tztest::TwinNames);

using Common::LoggerResult::ok;
using tztest::linesOfText;
using tztest::numberedMessages;
using tztest::textOf;
using tztest::writeText;

TYPED_TEST(RecorderRotation, KeepsFullFilesUnderNumbersAndLosesNothing)
{
    typename TestFixture::StartedLogger logger("logs/run.csv");
    this->rotate(logger, "logs/run.1.csv");
    this->rotate(logger, "logs/run.2.csv");
    logger.stop();
    const auto records = this->recordsOf("logs/run.csv");
    ASSERT_EQ(records.size(), 2 * this->fillCount);
    for (std::size_t i = 0; i < records.size(); ++i)
        ASSERT_EQ(records[i].number, i % this->fillCount);
    EXPECT_GE(std::filesystem::file_size("logs/run.1.csv"), 1u << 20);
}

TYPED_TEST(RecorderRotation, EveryAscFileIsWhole)
{
    typename TestFixture::StartedLogger logger("run.asc", 0);
    this->rotate(logger, "run.1.asc");
    logger.addMessages(numberedMessages<TypeParam>(0, 3));
    logger.stop();
    for (const char *file : {"run.1.asc", "run.asc"}) {
        const std::string text = textOf(file);
        EXPECT_TRUE(text.starts_with("date ")) << file;
        EXPECT_THAT(text, testing::HasSubstr("\nBegin TriggerBlock\n0.000000 ")) << file;
        EXPECT_TRUE(text.ends_with("\nEnd TriggerBlock\n")) << file;
        EXPECT_EQ(text.find("End TriggerBlock"), text.size() - 17) << file;
    }
}

TYPED_TEST(RecorderRotation, ASizeLimitBelowItsRangeIsOneMebibyte)
{
    for (const int limit : {0, -5}) {
        typename TestFixture::Logger logger(nullptr);
        logger.setConfig(this->configOf("run.csv", 1, limit));
        ASSERT_EQ(logger.start(), ok);
        logger.addMessages(numberedMessages<TypeParam>(0, 10'000)); // well below a mebibyte
        logger.stop();
        EXPECT_FALSE(std::filesystem::exists("run.1.csv"));
        ASSERT_EQ(logger.start(), ok);
        this->rotate(logger, "run.1.csv");
        logger.stop();
        EXPECT_GE(std::filesystem::file_size("run.1.csv"), 1u << 20);
        std::filesystem::remove("run.1.csv");
    }
}

using CanRecorderRotation = tztest::RecorderFixture<tztest::CanTwin>;

TEST_F(CanRecorderRotation, ASizeLimitAboveItsRangeIsAHundredMebibyte)
{
    Common::CANLogger logger(nullptr);
    logger.setConfig(configOf("run.csv", 1, std::numeric_limits<int>::max()));
    ASSERT_EQ(logger.start(), ok);
    TzVciMessage message = tztest::canMessage(0x123, tztest::risingBytes(64), TzVciCanFlag::fd);
    const std::vector<TzVciMessage> messages(25'000, message);
    for (int i = 0; i < 20; ++i) // 110 MB
        logger.addMessages(messages);
    logger.stop();
    ASSERT_TRUE(std::filesystem::exists("run.1.csv"));
    const auto size = std::filesystem::file_size("run.1.csv");
    EXPECT_GE(size, 100u << 20);
    EXPECT_LT(size, 103u << 20); // a batch more at most
    EXPECT_FALSE(std::filesystem::exists("run.2.csv"));
}

TYPED_TEST(RecorderRotation, RemovesAnOlderFileOfTheSameNumber)
{
    writeText("run.1.csv", "from an older recording");
    writeText("run.2.csv", "not reached");
    typename TestFixture::StartedLogger logger("run.csv");
    this->fillFile(logger);
    logger.stop();
    EXPECT_TRUE(textOf("run.1.csv").starts_with("Timestamp,"));
    EXPECT_EQ(textOf("run.2.csv"), "not reached");
}

TYPED_TEST(RecorderRotation, NumbersRestartAtOneWithNewSettingsOnly)
{
    typename TestFixture::StartedLogger logger("run.csv");
    this->rotate(logger, "run.1.csv");
    logger.stop();
    ASSERT_EQ(logger.start(), ok);
    this->rotate(logger, "run.2.csv");
    logger.stop();
    EXPECT_FALSE(std::filesystem::exists("run.3.csv"));
    logger.setConfig(this->configOf("run.csv"));
    std::filesystem::remove("run.1.csv");
    ASSERT_EQ(logger.start(), ok);
    this->rotate(logger, "run.1.csv");
    logger.stop();
    EXPECT_FALSE(std::filesystem::exists("run.3.csv"));
}

TYPED_TEST(RecorderRotation, AFolderInThePlaceOfTheKeptFileIsToldAndRecordingGoesOn)
{
    std::filesystem::create_directories("run.1.csv/inside");
    typename TestFixture::StartedLogger logger("run.csv");
    this->fillFile(logger);
    const std::string line = this->renameFailed("run.csv", "run.1.csv", std::errc::is_a_directory);
    EXPECT_TRUE(tztest::waitFor([&] { return this->log.has(3, line); }));
    this->rotate(logger, "run.2.csv"); // the number was taken all the same
    logger.stop();
    EXPECT_EQ(this->log.count(3, line), 1u);
    EXPECT_TRUE(std::filesystem::exists("run.1.csv/inside"));
    EXPECT_TRUE(textOf("run.2.csv").starts_with("Timestamp,"));
    EXPECT_TRUE(textOf("run.csv").starts_with("Timestamp,"));
}

TYPED_TEST(RecorderRotation, AFileThatSomebodyRemovedIsBegunAnew)
{
    typename TestFixture::StartedLogger logger("logs/run.csv");
    std::filesystem::remove_all("logs");
    this->fillFile(logger);
    EXPECT_TRUE(tztest::waitFor([] { return std::filesystem::exists("logs/run.csv"); }));
    logger.stop();
    EXPECT_TRUE(textOf("logs/run.csv").starts_with("Timestamp,"));
    EXPECT_FALSE(std::filesystem::exists("logs/run.1.csv"));
    EXPECT_EQ(this->log.lines().size(), 2u); // start and stop of the thread
}

TYPED_TEST(RecorderRotation, ALiveRecordingUnderTheKeptNameIsNotHarmed)
{
    typename TestFixture::Logger other(nullptr);
    other.setConfig(this->configOf("run.1.csv"));
    ASSERT_EQ(other.start(), ok);
    other.addMessages(numberedMessages<TypeParam>(0, 10));
    typename TestFixture::StartedLogger logger("run.csv");
    this->fillFile(logger);
    const std::string line = this->renameFailed("run.csv", "run.1.csv", std::errc::resource_unavailable_try_again);
    EXPECT_TRUE(tztest::waitFor([&] { return this->log.has(3, line); }));
    this->rotate(logger, "run.2.csv"); // goes on
    other.addMessages(numberedMessages<TypeParam>(10, 10));
    other.stop();
    logger.stop();
    const auto lines = linesOfText(textOf("run.1.csv"));
    ASSERT_EQ(lines.size(), 21u);
    for (std::uint32_t i = 0; i < 20; ++i)
        EXPECT_EQ(tztest::readNumbered<TypeParam>(lines[i + 1]).number, i);
    EXPECT_TRUE(textOf("run.2.csv").starts_with("Timestamp,"));
}

// Somebody moved the file away, and its name belongs to another recording by now.
TYPED_TEST(RecorderRotation, ALiveRecordingInThePlaceOfTheOwnFileIsNotHarmed)
{
    typename TestFixture::StartedLogger logger("run.csv");
    std::filesystem::rename("run.csv", "moved.csv");
    typename TestFixture::Logger other(nullptr);
    other.setConfig(this->configOf("run.csv"));
    ASSERT_EQ(other.start(), ok);
    other.addMessages(numberedMessages<TypeParam>(0, 10));
    this->fillFile(logger);
    EXPECT_TRUE(tztest::waitFor([&] { return this->log.has(3, this->openFailed("run.csv")); }));
    EXPECT_TRUE(logger.isRunning());
    EXPECT_FALSE(std::filesystem::exists("run.1.csv"));
    other.addMessages(numberedMessages<TypeParam>(10, 10));
    other.stop();
    logger.stop();
    EXPECT_EQ(this->recordsOf("run.csv").size(), 20u);
    EXPECT_GE(std::filesystem::file_size("moved.csv"), 1u << 20);
}

TYPED_TEST(RecorderRotation, AStrangeFileInThePlaceOfTheOwnOneIsKeptAndNotEmptied)
{
    writeText("run.1.csv", "from an older recording");
    typename TestFixture::StartedLogger logger("run.csv");
    std::filesystem::rename("run.csv", "moved.csv");
    writeText("run.csv", "somebody's");
    this->fillFile(logger);
    EXPECT_TRUE(tztest::waitFor([] { return textOf("run.csv").starts_with("Timestamp,"); })); // as at a start
    logger.stop();
    EXPECT_EQ(textOf("run.1.csv"), "somebody's");
    EXPECT_TRUE(textOf("moved.csv").starts_with("Timestamp,"));
    EXPECT_GE(std::filesystem::file_size("moved.csv"), 1u << 20);
    EXPECT_EQ(this->log.lines().size(), 2u); // start and stop of the thread
}

TYPED_TEST(RecorderRotation, AStrangeLinkInThePlaceOfTheOwnFileIsKeptAndNotFollowed)
{
    typename TestFixture::StartedLogger logger("run.csv");
    std::filesystem::rename("run.csv", "moved.csv");
    writeText("target.csv", "somebody's");
    std::filesystem::create_symlink("target.csv", "run.csv");
    this->rotate(logger, "run.1.csv");
    logger.stop();
    EXPECT_TRUE(std::filesystem::is_symlink("run.1.csv"));
    EXPECT_EQ(textOf("target.csv"), "somebody's");
    EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status("run.csv")));
    EXPECT_TRUE(textOf("run.csv").starts_with("Timestamp,"));
    EXPECT_EQ(this->log.lines().size(), 2u);
}

// The last flush begins no file that would stay empty.
TYPED_TEST(RecorderRotation, TheDataEndsAtThePathWhenTheStopComesWithAFullFile)
{
    constexpr std::uint32_t batches = TestFixture::fillCount / Common::FrameLogger::batchSize;
    constexpr std::uint32_t count = batches * Common::FrameLogger::batchSize; // the last one reaches the limit
    for (const std::uint32_t more : {0u, 1u}) {
        const auto messages = numberedMessages<TypeParam>(0, count + more);
        typename TestFixture::Logger logger(nullptr);
        const auto isLeftToTheStop = [&] { // and not to a tick in between, the first of which comes after 100 ms
            std::filesystem::remove("run.1.csv");
            logger.setConfig(this->configOf("run.csv"));
            const auto begin = std::chrono::steady_clock::now();
            EXPECT_EQ(logger.start(), ok);
            EXPECT_TRUE(logger.addMessages(messages));
            const bool isBeforeTheTick = std::chrono::steady_clock::now() - begin < std::chrono::milliseconds(80);
            logger.stop();
            return isBeforeTheTick;
        };
        ASSERT_TRUE(tztest::waitFor(isLeftToTheStop));
        EXPECT_EQ(std::filesystem::exists("run.1.csv"), more > 0);
        EXPECT_EQ(linesOfText(textOf("run.csv")).size(), 1 + (more > 0 ? more : count));
        EXPECT_EQ(this->recordsOf("run.csv").size(), messages.size());
    }
}

// Frames stay in the order of the calls and none is missing or twice, over the borders of files too.
TYPED_TEST(RecorderRotation, FramesOfThreadsThatTakeTurnsKeepTheirOrderOverTheBorders)
{
    constexpr std::uint8_t producerCount = 4;
    constexpr std::uint32_t perProducer = 30'000;
    typename TestFixture::StartedLogger logger("run.csv");
    std::vector<std::thread> producers;
    std::mutex turn; // of those that deliver
    for (std::uint8_t producer = 0; producer < producerCount; ++producer) {
        producers.emplace_back([&logger, &turn, producer] {
            const auto messages = numberedMessages<TypeParam>(0, perProducer, producer);
            std::size_t size = 1; // batches of all sizes
            for (std::size_t at = 0; at < messages.size(); at += size) {
                size = std::min<std::size_t>(size * 3 % 2003 + 1, messages.size() - at);
                const std::lock_guard lock(turn);
                EXPECT_TRUE(logger.addMessages({&messages[at], size}));
            }
        });
    }
    for (std::thread &producer : producers)
        producer.join();
    logger.stop();
    EXPECT_TRUE(std::filesystem::exists("run.3.csv"));
    std::map<int, std::uint32_t> next;
    for (const auto &record : this->recordsOf("run.csv"))
        ASSERT_EQ(record.number, next[record.producer]++) << "of producer " << record.producer;
    ASSERT_EQ(next.size(), producerCount);
    for (const auto &[producer, count] : next)
        EXPECT_EQ(count, perProducer) << "of producer " << producer;
}

} // namespace
