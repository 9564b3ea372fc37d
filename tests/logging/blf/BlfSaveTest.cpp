// SPDX-License-Identifier: GPL-3.0-or-later
// What both writers do alike: which records, how they reach the disk, and what goes wrong there.
#include "logging/blf/BlfPulse.h"
#include "logging/blf/BlfTextFile.h"

#include "common/Log.h"
#include "common/platform/ExclusiveFile.h"
#include "tests/logging/blf/BlfSavedText.h"
#include "tests/support/AllocationCounter.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/LogCapture.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <chrono>
#include <string>
#include <utility>

#include <unistd.h>

using namespace BLF;
using namespace tztest;
using Clock = std::chrono::steady_clock;

namespace {

BlfFrames dataRecords(std::size_t count)
{
    BlfFrames frames;
    for (std::size_t i = 0; i < count; ++i)
        frames.push_back(blfDataRecord(static_cast<double>(i)));
    return frames;
}

std::size_t lineCount(const std::string &text)
{
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

class BlfSave : public testing::TestWithParam<BlfSaver>
{
protected:
    bool save(const QString &path, const BlfFrames &frames, const std::function<void()> &pulse = {}) const
    {
        return GetParam().save(path, frames, pulse);
    }
    QString path() const { return m_folder.filePath(QStringLiteral("out.txt")); }

    LogCapture m_log;
    QTemporaryDir m_folder;
    BlfOptionsGuard m_options;
};

TEST_P(BlfSave, EmptyListIsFalseAndLeavesThePathAlone)
{
    EXPECT_FALSE(save(path(), {}));
    EXPECT_FALSE(QFileInfo::exists(path()));
    EXPECT_EQ(m_log.countContaining(Common::LogLevel::error, ""), 0U);
}

TEST_P(BlfSave, PathThatCannotBeOpenedIsFalseAndLogged)
{
    const QString missing = m_folder.filePath(QStringLiteral("missing/out.txt"));
    EXPECT_FALSE(save(missing, dataRecords(1)));
    EXPECT_EQ(m_log.countContaining(Common::LogLevel::error, "Cannot open " + missing.toStdString() + " for writing: "),
              1U);
    EXPECT_FALSE(save(m_folder.path(), dataRecords(1))) << "a folder";
    EXPECT_FALSE(save(QString(), dataRecords(1)));
    EXPECT_EQ(m_log.countContaining(Common::LogLevel::error, "Cannot open "), 3U);
}

TEST_P(BlfSave, FullDiskIsFalseAndKeepsWhatReachedTheFile)
{
    constexpr rlim_t limit = 300'000;
    const BlfFrames frames = dataRecords(20'000);
    bool isSaved = true;
    {
        const FileSizeLimit noMore(limit);
        isSaved = save(path(), frames);
    }
    EXPECT_FALSE(isSaved);
    EXPECT_EQ(QFileInfo(path()).size(), static_cast<qint64>(limit));
    EXPECT_TRUE(m_log.has(Common::LogLevel::error, "Could not write all of " + path().toStdString()));
}

TEST_P(BlfSave, DiskThatIsFullAtTheLastBlockIsFalseToo)
{
    bool isSaved = true;
    {
        const FileSizeLimit noMore(10);
        isSaved = save(path(), dataRecords(1));
    }
    EXPECT_FALSE(isSaved);
    EXPECT_EQ(QFileInfo(path()).size(), 10);
    EXPECT_TRUE(m_log.has(Common::LogLevel::error, "Could not write all of " + path().toStdString()));
}

TEST_P(BlfSave, ReplacesWhatIsThere)
{
    ASSERT_TRUE(save(path(), dataRecords(1000)));
    ASSERT_TRUE(save(path(), dataRecords(1)));
    EXPECT_EQ(lineCount(fileContent(path())), 1 + GetParam().linesAround);
}

TEST_P(BlfSave, FileOfARunningRecordingIsLeftAsItIs)
{
    Common::platform::ExclusiveFile recording;
    ASSERT_FALSE(recording.open(QFile::encodeName(path()).toStdString()));
    ASSERT_EQ(recording.write("recorded"), 8U);
    EXPECT_FALSE(save(path(), dataRecords(1)));
    EXPECT_EQ(fileContent(path()), "recorded");
}

TEST_P(BlfSave, FileIsFreeAfterwards)
{
    ASSERT_TRUE(save(path(), dataRecords(1)));
    Common::platform::ExclusiveFile other;
    EXPECT_FALSE(other.open(QFile::encodeName(path()).toStdString()));
}

TEST_P(BlfSave, NamesBeyondAsciiAreThoseOfTheFile)
{
    const QString name = m_folder.filePath(QString::fromUtf8("T\xC3\xBCr \xE2\x82\xAC.txt"));
    ASSERT_TRUE(save(name, dataRecords(1)));
    EXPECT_TRUE(QFileInfo::exists(name));
}

TEST_P(BlfSave, ManyBlocksKeepEveryRecordInOrder)
{
    constexpr std::size_t count = 30'000; // more than a million characters
    GetParam().options->exportAdditionalInfo = false;
    ASSERT_TRUE(save(path(), dataRecords(count)));
    const std::string text = fileContent(path());
    EXPECT_EQ(lineCount(text), count + GetParam().linesAround);
    std::size_t at = 0;
    for (std::size_t i = 0; i < count; ++i) {
        at = text.find('\n' + std::to_string(i) + ".000000", at);
        ASSERT_NE(at, std::string::npos) << i;
    }
}

TEST_P(BlfSave, LineLongerThanABlockIsWrittenWhole)
{
    const QString description(500'000, QLatin1Char('d'));
    const BlfFrames frames{blfDataRecord(), blfEventRecord(FrameType::systemVariable, description), blfDataRecord()};
    ASSERT_TRUE(save(path(), frames));
    const std::string text = fileContent(path());
    EXPECT_NE(text.find(description.toStdString() + '\n'), std::string::npos);
    EXPECT_EQ(lineCount(text), 3 + GetParam().linesAround);
}

TEST_P(BlfSave, WithoutInternalEventsOnlyDataAndRemoteFramesAreWritten)
{
    BlfFrames frames{blfDataRecord(), blfRemoteRecord(), blfFdRecord()};
    for (std::uint32_t type = FrameType::error; type <= FrameType::statistic + 1; ++type)
        frames.push_back(blfEventRecord(type, QStringLiteral("event")));
    const std::string without = savedText(GetParam(), blfFramesAlone, frames);
    EXPECT_EQ(lineCount(without), 3 + GetParam().linesAround);
    EXPECT_EQ(without.find("event\n"), std::string::npos);
    EXPECT_EQ(without.find("Error"), std::string::npos);
    const std::string with = savedText(GetParam(), {}, frames);
    EXPECT_EQ(lineCount(with), frames.size() + GetParam().linesAround);
}

TEST_P(BlfSave, RecordsThatAreAllLeftOutStillMakeAFile)
{
    EXPECT_EQ(lineCount(savedText(GetParam(), blfFramesAlone, {blfEventRecord(FrameType::error, {})})),
              GetParam().linesAround);
}

TEST_P(BlfSave, OptionsAreOnAtFirstAndEachWritersOwn)
{
    EXPECT_TRUE(GetParam().options->exportInternalEvents && GetParam().options->exportAdditionalInfo);
    BlfExportOptions &others =
        GetParam().options == blfCsvSaver.options ? BlfAscWriter::options : BlfCsvWriter::options;
    others = blfFramesAlone;
    ASSERT_TRUE(save(path(), {blfDataRecord(), blfEventRecord(FrameType::error, {})}));
    EXPECT_EQ(lineCount(fileContent(path())), 2 + GetParam().linesAround);
}

TEST_P(BlfSave, NoLineAllocates)
{
    const auto allocationsFor = [this](const BlfFrames &frames) {
        const std::size_t before = allocationsOfThisThread();
        EXPECT_TRUE(save(path(), frames));
        return allocationsOfThisThread() - before;
    };
    const BlfFrame event = blfEventRecord(FrameType::statistic, QStringLiteral("Statistic: D 1"));
    BlfFrames few{blfDataRecord(), blfFdRecord(), event};
    BlfFrames many;
    for (int i = 0; i < 5000; ++i)
        many.insert(many.end(), few.begin(), few.end());
    allocationsFor(few); // what is made once
    EXPECT_EQ(allocationsFor(many), allocationsFor(few));
}

INSTANTIATE_TEST_SUITE_P(Forms, BlfSave, testing::Values(blfCsvSaver, blfAscSaver),
                         [](const auto &test) { return std::string(test.param.name); });

void spend(Clock::duration time)
{
    for (const auto end = Clock::now() + time; Clock::now() < end;) {
    }
}

// Takes its time for each line.
class SlowForm final : public BlfLineForm
{
public:
    std::string header() const override { return {}; }
    std::string_view footer() const override { return {}; }

protected:
    char *line(char *out, const BlfFrame &) const override
    {
        spend(std::chrono::microseconds(60));
        return out;
    }
};

TEST(BlfSavePulse, IsCalledNowAndThenInALongSave)
{
    const QTemporaryDir folder;
    constexpr std::size_t records = 4 * BlfPulse::stepsBetweenBeats; // each such part takes longer than the interval
    std::size_t calls = 0;
    EXPECT_TRUE(saveRecords(folder.filePath(QStringLiteral("slow")), dataRecords(records), SlowForm(), true,
                            [&calls] { ++calls; }));
    EXPECT_EQ(calls, 4U);
}

// Descriptions alone; each takes longer than the interval.
class SlowTextForm final : public BlfLineForm
{
public:
    std::string header() const override { return {}; }
    std::string_view footer() const override { return {}; }

protected:
    char *line(char *out, const BlfFrame &frame) const override
    {
        spend(BlfPulse::interval);
        return utf8Text(out, frame.description);
    }
};

BlfFrames recordsOfABlock(std::size_t count)
{
    return BlfFrames(count, blfEventRecord(FrameType::systemVariable, QString(300'000, QLatin1Char('t'))));
}

TEST(BlfSavePulse, IsCalledBetweenBlocksOfFewLongRecords)
{
    const QTemporaryDir folder;
    const BlfFrames frames = recordsOfABlock(3);
    std::size_t calls = 0;
    EXPECT_TRUE(
        saveRecords(folder.filePath(QStringLiteral("slow")), frames, SlowTextForm(), true, [&calls] { ++calls; }));
    EXPECT_EQ(calls, frames.size());
}

TEST(BlfSavePulse, MayEndTheSaveByThrowing)
{
    struct Enough
    {
    };
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("slow"));
    const BlfFrames frames = recordsOfABlock(3);
    EXPECT_THROW(saveRecords(path, frames, SlowTextForm(), true, [] { throw Enough(); }), Enough);
    EXPECT_EQ(QFileInfo(path).size(), 300'001);
    Common::platform::ExclusiveFile other;
    EXPECT_FALSE(other.open(QFile::encodeName(path).toStdString())) << "the file is let go of";
}

TEST(BlfSavePulse, IsNotCalledInAShortSave)
{
    const QTemporaryDir folder;
    std::size_t calls = 0;
    EXPECT_TRUE(
        saveRecords(folder.filePath(QStringLiteral("short")), dataRecords(1), SlowForm(), true, [&calls] { ++calls; }));
    EXPECT_EQ(calls, 0U);
}

// Closes the file under the one who has written it. Closing fails then, as it does where a file system tells only at
// the end that it lost something.
class LosingForm final : public BlfLineForm
{
public:
    explicit LosingForm(QString path)
        : m_path(std::move(path))
    {
    }
    std::string header() const override { return {}; }
    std::string_view footer() const override
    {
        const QDir descriptors(QStringLiteral("/proc/self/fd"));
        for (const QString &name : descriptors.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)) {
            if (QFileInfo(descriptors.filePath(name)).canonicalFilePath() == m_path)
                ::close(name.toInt());
        }
        return {};
    }

protected:
    char *line(char *out, const BlfFrame &frame) const override { return utf8Text(out, frame.description); }

private:
    const QString m_path;
};

TEST(BlfSaveEnd, FailureToCloseTheFileIsFalseAndLogged)
{
    const LogCapture log;
    const QTemporaryDir folder;
    const QString path = QFileInfo(folder.path()).canonicalFilePath() + QStringLiteral("/lost");
    EXPECT_FALSE(saveRecords(path, recordsOfABlock(1), LosingForm(path), true, {}));
    EXPECT_EQ(log.countContaining(Common::LogLevel::error, "Could not write all of " + path.toStdString() + ": "), 1U);
    EXPECT_EQ(QFileInfo(path).size(), 300'001) << "all was written before";
}

TEST(BlfPulse, CallsAtMostOnceInItsInterval)
{
    std::size_t calls = 0;
    BlfPulse pulse([&calls] { ++calls; });
    const auto start = Clock::now();
    while (calls < 2)
        pulse.beat();
    EXPECT_GE(Clock::now() - start, 2 * BlfPulse::interval);
}

TEST(BlfPulse, LooksAtTheClockOnlyEverySoManySteps)
{
    std::size_t calls = 0;
    BlfPulse pulse([&calls] { ++calls; });
    spend(BlfPulse::interval);
    for (std::size_t i = 1; i < BlfPulse::stepsBetweenBeats; ++i)
        pulse.step();
    EXPECT_EQ(calls, 0U);
    pulse.step();
    EXPECT_EQ(calls, 1U);
}

TEST(BlfPulse, WithoutAFunctionDoesNothing)
{
    BlfPulse pulse({});
    spend(BlfPulse::interval);
    pulse.beat();
    pulse.step();
}

} // namespace
