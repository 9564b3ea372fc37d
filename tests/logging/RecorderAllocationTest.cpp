// SPDX-License-Identifier: GPL-3.0-or-later
// Recording allocates nothing for a frame.
#include "tests/logging/FormattedLines.h"
#include "tests/logging/RecorderFixture.h"
#include "tests/support/AllocationCounter.h"

#include "common/UnifiedTimeManager.h"

namespace {

template <typename Twin> class RecorderAllocations : public tztest::RecorderFixture<Twin>
{
};
TYPED_TEST_SUITE(RecorderAllocations, tztest::RecorderTwins, tztest::TwinNames);

TYPED_TEST(RecorderAllocations, NoneToFormatAFrame)
{
    const Common::UnifiedTimeManager time;
    const auto messages = tztest::numberedMessages<TypeParam>(0, 10'000);
    for (const int format : {0, 1}) {
        const auto formatter = tztest::makeFormatter(this->configOf("run", format));
        Common::RecordClock clock(&time, true);
        Common::LineBuffer lines(128 * 1024);
        formatter->append(messages, clock, lines); // the buffer grows to the size of a batch
        const std::size_t before = tztest::allocationsOfThisThread();
        lines.clear();
        formatter->append(messages, clock, lines);
        EXPECT_EQ(tztest::allocationsOfThisThread(), before);
        EXPECT_FALSE(lines.empty());
    }
}

TYPED_TEST(RecorderAllocations, NoneFromTheHandOverToTheFile)
{
    const Common::UnifiedTimeManager time;
    typename TestFixture::Logger logger(&time);
    logger.setConfig(this->configOf("run.csv", 1, 100));
    ASSERT_EQ(logger.start(), Common::LoggerResult::ok);
    const auto messages = tztest::numberedMessages<TypeParam>(0, 10'000);
    const auto record = [&] {
        logger.addMessages(messages);
        logger.addMessage(messages[0]);
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (logger.waitingRecords() > 0 && std::chrono::steady_clock::now() < end)
            std::this_thread::yield();
        return logger.waitingRecords() == 0;
    };
    ASSERT_TRUE(record()); // buffers grow
    ASSERT_TRUE(record());
    const std::size_t before = tztest::allocationsOfAllThreads();
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(record());
    EXPECT_EQ(tztest::allocationsOfAllThreads(), before);
    logger.stop();
    EXPECT_EQ(this->recordsOf("run.csv").size(), 5 * 10'001u);
}

} // namespace
