// SPDX-License-Identifier: GPL-3.0-or-later
// Disks that are full, and files that cannot be removed or renamed: on mounts of the test's own.
#include "tests/logging/RecorderFixture.h"
#include "tests/support/OwnMounts.h"

namespace {

constexpr std::size_t diskSize = 256 * 1024;

template <typename Twin> class RecorderDisk : public tztest::RecorderFixture<Twin>
{
protected:
    void TearDown() override
    {
        for (const char *mount : {"disk", "run.1.csv"}) {
            if (tztest::isInOwnMounts())
                tztest::unmount(mount); // whichever the test has made
        }
    }
    void mountDisk()
    {
        std::filesystem::create_directory("disk");
        ASSERT_TRUE(tztest::mountSmallDisk("disk", diskSize));
    }
    /// Hands over more than the disk holds, in many small writes.
    void overfill(typename Twin::Logger &logger)
    {
        for (std::uint32_t i = 0; i < 10; ++i) {
            ASSERT_TRUE(logger.addMessages(tztest::numberedMessages<Twin>(i * 1000, 1000)));
            ASSERT_TRUE(tztest::waitFor([&] { return logger.waitingRecords() == 0; }));
        }
    }
};
TYPED_TEST_SUITE(RecorderDisk, tztest::RecorderTwins, tztest::TwinNames);

using Common::LoggerResult::headerFailed;
using Common::LoggerResult::ok;
using tztest::linesOfText;
using tztest::numberedMessages;
using tztest::textOf;
using tztest::writeText;

TYPED_TEST(RecorderDisk, AFullDiskLeavesWholeLinesInOrder)
{
    TZ_RUN_IN_OWN_MOUNTS();
    this->mountDisk();
    typename TestFixture::StartedLogger logger("disk/run.csv");
    this->overfill(logger);
    EXPECT_TRUE(logger.isRunning());
    logger.stop();
    const std::string text = textOf("disk/run.csv");
    EXPECT_THAT(text.size(), testing::AllOf(testing::Gt(diskSize - 1000), testing::Le(diskSize)));
    EXPECT_TRUE(text.ends_with('\n'));
    const auto records = this->recordsOf("disk/run.csv");
    for (std::uint32_t i = 0; i < records.size(); ++i)
        ASSERT_EQ(records[i].number, i);
    EXPECT_EQ(this->log.lines().size(), 2u); // start and stop of the thread: lost without a message
}

TYPED_TEST(RecorderDisk, AFullDiskLeavesAnAscFileWithItsClosingLine)
{
    TZ_RUN_IN_OWN_MOUNTS();
    this->mountDisk();
    typename TestFixture::StartedLogger logger("disk/run.asc", 0);
    this->overfill(logger);
    logger.stop();
    const std::string text = textOf("disk/run.asc");
    EXPECT_THAT(text.size(), testing::AllOf(testing::Gt(diskSize - 1000), testing::Le(diskSize)));
    EXPECT_TRUE(text.ends_with("\nEnd TriggerBlock\n"));
    const auto lines = linesOfText(text);
    EXPECT_EQ(lines[lines.size() - 2].size(), lines[lines.size() - 3].size()); // all are alike: none is cut
}

TYPED_TEST(RecorderDisk, AFullDiskAtTheStartIsToldByTheResult)
{
    TZ_RUN_IN_OWN_MOUNTS();
    this->mountDisk();
    writeText("disk/filler", std::string(2 * diskSize, 'x'));
    typename TestFixture::Logger logger(nullptr);
    logger.setConfig(this->configOf("disk/run.asc", 0));
    EXPECT_EQ(logger.start(), headerFailed);
    EXPECT_FALSE(logger.isRunning());
    std::filesystem::remove("disk/filler");
    EXPECT_EQ(logger.start(), ok); // the failed start holds no lock
    logger.stop();
    EXPECT_THAT(textOf("disk/run.asc"), testing::EndsWith("End TriggerBlock\n"));
}

TYPED_TEST(RecorderDisk, AFolderThatCannotBeWrittenIsAnOpenFailure)
{
    TZ_RUN_IN_OWN_MOUNTS();
    this->mountDisk();
    writeText("disk/older.csv", "older");
    ASSERT_TRUE(tztest::makeReadOnly("disk"));
    for (const char *path : {"disk/run.csv", "disk/older.csv", "disk/new folder/run.csv"}) {
        typename TestFixture::Logger logger(nullptr);
        logger.setConfig(this->configOf(path));
        EXPECT_EQ(logger.start(), Common::LoggerResult::openFailed);
        EXPECT_FALSE(logger.isRunning());
        EXPECT_EQ(this->log.count(3, this->openFailed(path)), 1u);
    }
    EXPECT_EQ(textOf("disk/older.csv"), "older");
    EXPECT_FALSE(std::filesystem::exists("disk/run.csv"));
}

TYPED_TEST(RecorderDisk, RecordingGoesOnInTheNextFileOnceThereIsRoom)
{
    TZ_RUN_IN_OWN_MOUNTS();
    this->mountDisk();
    typename TestFixture::StartedLogger logger("disk/run.asc", 0);
    this->overfill(logger);
    std::filesystem::copy("disk/run.asc", "first.asc");
    std::filesystem::remove("disk/run.asc"); // the room is free once the recorder closes the file
    this->fillFile(logger);                  // counts up to the size limit, though nothing is written
    EXPECT_TRUE(tztest::waitFor([] { return std::filesystem::exists("disk/run.asc"); }));
    ASSERT_TRUE(tztest::waitFor([&] { return logger.waitingRecords() == 0; }));
    logger.addMessages(numberedMessages<TypeParam>(0, 3));
    logger.stop();
    EXPECT_TRUE(textOf("first.asc").ends_with("\nEnd TriggerBlock\n"));
    const std::string text = textOf("disk/run.asc");
    EXPECT_TRUE(text.starts_with("date "));
    EXPECT_TRUE(text.ends_with("\nEnd TriggerBlock\n"));
    EXPECT_THAT(text, testing::HasSubstr("Begin TriggerBlock\n0.000000 "));
}

TYPED_TEST(RecorderDisk, AKeptFileThatCannotBeRemovedIsToldAndStaysWhole)
{
    TZ_RUN_IN_OWN_MOUNTS();
    writeText("run.1.csv", "in the way");
    writeText("busy", "held by the system");
    ASSERT_TRUE(tztest::bindMount("busy", "run.1.csv"));
    typename TestFixture::StartedLogger logger("run.csv");
    this->fillFile(logger);
    const std::string line = this->renameFailed("run.csv", "run.1.csv", std::errc::device_or_resource_busy);
    EXPECT_TRUE(tztest::waitFor([&] { return this->log.has(3, line); }));
    ASSERT_TRUE(tztest::waitFor([&] { return logger.waitingRecords() == 0; }));
    logger.addMessages(numberedMessages<TypeParam>(7, 1));
    logger.stop();
    EXPECT_EQ(textOf("run.1.csv"), "held by the system");
    EXPECT_TRUE(textOf("run.csv").starts_with("Timestamp,")); // truncated, and recorded into
    EXPECT_THAT(linesOfText(textOf("run.csv")), testing::SizeIs(testing::Le(this->fillCount)));
}

} // namespace
