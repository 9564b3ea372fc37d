// SPDX-License-Identifier: GPL-3.0-or-later
// Start, stop and settings of the recorders.
#include "common/UnifiedTimeManager.h"
#include "tests/logging/RecorderFixture.h"
#include "tests/support/NoMoreThreads.h"

#include <mutex>
#include <thread>

namespace {

template <typename Twin> class Recorder : public tztest::RecorderFixture<Twin>
{
};
TYPED_TEST_SUITE(Recorder, tztest::RecorderTwins, tztest::TwinNames);

using Common::LoggerResult::alreadyRunning;
using Common::LoggerResult::ok;
using Common::LoggerResult::openFailed;
using tztest::linesOfText;
using tztest::numberedMessage;
using tztest::numberedMessages;
using tztest::textOf;

TYPED_TEST(Recorder, WritesWhatWasHandedOverBeforeTheStop)
{
    typename TestFixture::Logger logger(nullptr);
    logger.setConfig(this->configOf("logs/run.csv"));
    EXPECT_FALSE(logger.isRunning());
    ASSERT_EQ(logger.start(), ok);
    EXPECT_TRUE(logger.isRunning());
    EXPECT_TRUE(logger.addMessage(numberedMessage<TypeParam>(0)));
    EXPECT_TRUE(logger.addMessages(numberedMessages<TypeParam>(1, 99)));
    logger.stop();
    EXPECT_FALSE(logger.isRunning());
    const auto records = this->recordsOf("logs/run.csv");
    ASSERT_EQ(records.size(), 100u);
    for (std::uint32_t i = 0; i < records.size(); ++i)
        EXPECT_EQ(records[i].number, i);
    EXPECT_TRUE(this->log.has(1, TypeParam::threadStarted));
    EXPECT_TRUE(this->log.has(1, TypeParam::threadStopped));
    EXPECT_EQ(this->log.lines().size(), 2u);
}

template <typename Twin> TzVciMessage numberedMessageAt(std::uint64_t ticks, std::uint32_t number)
{
    TzVciMessage message = numberedMessage<Twin>(number);
    if constexpr (std::is_same_v<Twin, tztest::CanTwin>)
        tztest::setTime(message, message.frame.can, ticks);
    else
        tztest::setTime(message, message.frame.lin, ticks);
    return message;
}

/// Waits until all that was handed over is formatted: the flush thread has come back for a further frame.
template <typename Twin> void waitUntilFormatted(typename Twin::Logger &logger, TzVciMessage message)
{
    EXPECT_TRUE(tztest::waitFor([&] { return logger.waitingRecords() == 0; }));
    EXPECT_TRUE(logger.addMessage(message));
    EXPECT_TRUE(tztest::waitFor([&] { return logger.waitingRecords() == 0; }));
}

// The times count from the first frame of the file on the common time base as it is when each frame is written.
TYPED_TEST(Recorder, ANewTimeReferenceMovesTheTimesUntilTheNextFile)
{
    constexpr std::uint64_t second = 10'000'000; // in 0.1 microsecond
    Common::UnifiedTimeManager time;
    const int device = numberedMessage<TypeParam>(0).deviceIndex;
    time.registerDevice(device, 0);
    typename TestFixture::Logger logger(&time);
    logger.setConfig(this->configOf("run.csv"));
    ASSERT_EQ(logger.start(), ok);
    const TzVciMessage message = numberedMessageAt<TypeParam>(100 * second, 0);
    logger.addMessage(message);
    waitUntilFormatted<TypeParam>(logger, message);

    time.registerDevice(device, 150 * second);
    logger.addMessage(numberedMessageAt<TypeParam>(150 * second + second / 1000, 2));
    this->fillFile(logger);
    logger.stop();
    ASSERT_TRUE(std::filesystem::exists("run.1.csv"));
    const auto records = this->recordsOf("run.csv"); // each file begins at zero
    ASSERT_GT(records.size(), 3u);
    EXPECT_EQ(records[0].time, "0.000000");
    EXPECT_EQ(records[2].number, 2u);
    EXPECT_EQ(records[2].time, "-99.999000");
    EXPECT_EQ(records.back().time, "0.000000"); // of equal frames, after the split
}

TYPED_TEST(Recorder, AnAscFileEndsInTheClosingLine)
{
    typename TestFixture::StartedLogger logger("run.asc", 0);
    logger.addMessage(numberedMessage<TypeParam>(7));
    logger.stop();
    const std::string text = textOf("run.asc");
    EXPECT_TRUE(text.starts_with("date "));
    EXPECT_THAT(text, testing::HasSubstr("Begin TriggerBlock\n0.000000 "));
    EXPECT_TRUE(text.ends_with("\nEnd TriggerBlock\n"));
    EXPECT_EQ(text.find("End TriggerBlock"), text.size() - 17); // once
}

TYPED_TEST(Recorder, WithoutAnyFrameTheFileHasHeaderAndEnd)
{
    typename TestFixture::StartedLogger logger("run.asc", 0);
    EXPECT_THAT(textOf("run.asc"), testing::EndsWith("Begin TriggerBlock\n")); // there at once
    logger.stop();
    EXPECT_THAT(textOf("run.asc"), testing::EndsWith("Begin TriggerBlock\nEnd TriggerBlock\n"));
}

TYPED_TEST(Recorder, WritesWhileItRunsAndNothingComes)
{
    typename TestFixture::StartedLogger logger("run.csv");
    logger.addMessage(numberedMessage<TypeParam>(1));
    EXPECT_TRUE(tztest::waitFor([] { return linesOfText(textOf("run.csv")).size() == 2; }));
    logger.stop();
}

TYPED_TEST(Recorder, WithoutAPathDoesNotStart)
{
    typename TestFixture::Logger logger(nullptr);
    EXPECT_EQ(logger.start(), openFailed); // never configured
    logger.setConfig(this->configOf(""));
    EXPECT_EQ(logger.start(), openFailed);
    EXPECT_EQ(this->log.count(3, TypeParam::noPath), 2u);
    EXPECT_FALSE(logger.isRunning());
}

TYPED_TEST(Recorder, WithoutAThreadItDoesNotStartAndLeavesAWholeFile)
{
    typename TestFixture::Logger logger(nullptr);
    logger.setConfig(this->configOf("run.asc", 0));
    {
        const tztest::NoMoreThreads none;
        EXPECT_EQ(logger.start(), Common::LoggerResult::threadFailed);
    }
    EXPECT_FALSE(logger.isRunning());
    EXPECT_FALSE(logger.addMessage(numberedMessage<TypeParam>(1)));
    const std::string reason = std::make_error_code(std::errc::resource_unavailable_try_again).message();
    EXPECT_TRUE(this->log.has(3, "Failed to start flush thread: " + reason));
    EXPECT_EQ(this->log.lines().size(), 1u);
    EXPECT_THAT(textOf("run.asc"), testing::EndsWith("Begin TriggerBlock\nEnd TriggerBlock\n"));
    EXPECT_EQ(logger.start(), ok); // the file is free again
    logger.stop();
}

TYPED_TEST(Recorder, ASecondStartIsRefusedAndDisturbsNothing)
{
    typename TestFixture::StartedLogger logger("run.csv");
    logger.addMessage(numberedMessage<TypeParam>(1));
    EXPECT_EQ(logger.start(), alreadyRunning);
    EXPECT_TRUE(this->log.has(3, TypeParam::alreadyRunning));
    logger.stop();
    EXPECT_EQ(this->recordsOf("run.csv").size(), 1u);
}

TYPED_TEST(Recorder, TakesNoSettingsWhileRunning)
{
    typename TestFixture::StartedLogger logger("run.csv");
    logger.setConfig(this->configOf("other.asc", 0));
    EXPECT_TRUE(this->log.has(3, TypeParam::configRefused));
    logger.addMessage(numberedMessage<TypeParam>(1));
    logger.stop();
    EXPECT_EQ(this->recordsOf("run.csv").size(), 1u);
    ASSERT_EQ(logger.start(), ok); // still the old settings
    logger.stop();
    EXPECT_FALSE(std::filesystem::exists("other.asc"));
}

TYPED_TEST(Recorder, TakesNoFramesUnlessItRuns)
{
    typename TestFixture::Logger logger(nullptr);
    logger.setConfig(this->configOf("run.csv"));
    EXPECT_FALSE(logger.addMessage(numberedMessage<TypeParam>(1)));
    ASSERT_EQ(logger.start(), ok);
    logger.stop();
    EXPECT_FALSE(logger.addMessage(numberedMessage<TypeParam>(2)));
    EXPECT_FALSE(logger.addMessages(numberedMessages<TypeParam>(3, 10)));
    ASSERT_EQ(logger.start(), ok);
    EXPECT_TRUE(logger.addMessages({}));
    logger.stop();
    EXPECT_TRUE(this->recordsOf("run.csv").empty());
}

TYPED_TEST(Recorder, AStopWithoutAStartDoesNothing)
{
    typename TestFixture::Logger logger(nullptr);
    logger.stop();
    logger.setConfig(this->configOf("run.csv"));
    logger.stop();
    EXPECT_FALSE(std::filesystem::exists("run.csv"));
    EXPECT_TRUE(this->log.lines().empty());
}

TYPED_TEST(Recorder, ARestartEmptiesTheFileAndBeginsAtTimeZero)
{
    typename TestFixture::Logger logger(nullptr);
    logger.setConfig(this->configOf("run.csv"));
    for (std::uint32_t run = 0; run < 3; ++run) {
        ASSERT_EQ(logger.start(), ok);
        logger.addMessages(numberedMessages<TypeParam>(run * 100, 5));
        logger.stop();
        const auto records = this->recordsOf("run.csv");
        ASSERT_EQ(records.size(), 5u);
        EXPECT_EQ(records[0].number, run * 100);
    }
}

TYPED_TEST(Recorder, DestructionIsAStop)
{
    {
        typename TestFixture::StartedLogger logger("run.asc", 0);
        logger.addMessages(numberedMessages<TypeParam>(0, 1000));
    }
    const std::string text = textOf("run.asc");
    EXPECT_THAT(text, testing::EndsWith("End TriggerBlock\n"));
    EXPECT_THAT(linesOfText(text), testing::SizeIs(testing::Ge(1005u)));
}

TYPED_TEST(Recorder, StopsAtOnceThoughItsThreadSleeps)
{
    typename TestFixture::Logger logger(nullptr);
    logger.setConfig(this->configOf("run.csv"));
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < 50; ++i) {
        ASSERT_EQ(logger.start(), ok);
        logger.stop();
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(50 * 100));
}

// As when a drain thread was joined and the thread that joined it hands over the rest.
TYPED_TEST(Recorder, FramesKeepTheirOrderWhenAnotherThreadGoesOnDelivering)
{
    constexpr std::uint32_t runs = 20;
    constexpr std::uint32_t perRun = 1000; // several blocks of the queue
    typename TestFixture::StartedLogger logger("run.csv");
    std::uint32_t next = 0;
    for (std::uint32_t run = 0; run < runs; ++run) {
        std::thread drain([&] { EXPECT_TRUE(logger.addMessages(numberedMessages<TypeParam>(next, perRun))); });
        drain.join();
        EXPECT_TRUE(logger.addMessages(numberedMessages<TypeParam>(next + perRun, 10)));
        next += perRun + 10;
    }
    logger.stop();
    const auto records = this->recordsOf("run.csv");
    ASSERT_EQ(records.size(), next);
    for (std::uint32_t i = 0; i < records.size(); ++i)
        ASSERT_EQ(records[i].number, i);
}

// What a caller was told to be taken is in the file, however close the stop came.
TYPED_TEST(Recorder, AStopAmidTheTrafficLosesNothingThatWasTaken)
{
    typename TestFixture::Logger logger(nullptr);
    logger.setConfig(this->configOf("run.csv", 1, 100));
    for (int run = 0; run < 8; ++run) {
        ASSERT_EQ(logger.start(), ok);
        std::atomic<std::uint32_t> taken{0};
        std::atomic<int> begun{0};
        std::mutex turn; // of those that deliver
        const auto deliver = [&](const TzVciMessage &message) {
            const std::lock_guard lock(turn);
            return logger.addMessage(message);
        };
        const auto produce = [&](std::uint8_t producer) {
            ++begun;
            for (std::uint32_t number = 0; deliver(numberedMessage<TypeParam>(number, producer)); ++number)
                ++taken;
        };
        std::vector<std::thread> producers;
        for (std::uint8_t producer = 0; producer < 3; ++producer)
            producers.emplace_back(produce, producer);
        const bool running = tztest::waitFor([&] { return begun == 3; });
        std::this_thread::sleep_for(std::chrono::microseconds(300 * run)); // the stop comes at another moment each time
        logger.stop();
        for (std::thread &producer : producers)
            producer.join();
        EXPECT_TRUE(running);
        ASSERT_EQ(linesOfText(textOf("run.csv")).size(), taken + 1);
    }
}

TYPED_TEST(Recorder, StartsAndStopsFromSeveralThreadsLeaveAWholeFile)
{
    typename TestFixture::Logger logger(nullptr);
    logger.setConfig(this->configOf("run.asc", 0));
    std::atomic<bool> ended{false};
    std::vector<std::thread> threads;
    for (int i = 0; i < 2; ++i) {
        threads.emplace_back([&] {
            for (int n = 0; n < 100; ++n) {
                logger.start();
                logger.setConfig(this->configOf("run.asc", 0));
                logger.stop();
            }
        });
    }
    std::thread producer([&] {
        while (!ended)
            logger.addMessage(numberedMessage<TypeParam>(1));
    });
    for (std::thread &thread : threads)
        thread.join();
    ended = true;
    producer.join();
    logger.stop();
    EXPECT_FALSE(logger.isRunning());
    EXPECT_THAT(textOf("run.asc"), testing::EndsWith("End TriggerBlock\n"));
}

} // namespace
