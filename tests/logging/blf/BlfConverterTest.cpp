// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/blf/BlfConverter.h"

#include "logging/blf/BLFParser.h"
#include "logging/blf/BlfConversionJob.h"
#include "logging/blf/BlfPulse.h"
#include "tests/logging/blf/BlfSlowWork.h"
#include "tests/logging/blf/BlfTestWriter.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempWorkDir.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>

#include <chrono>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

using BLF::BlfConversionJob;
using BLF::BlfConverter;
using Result = BLF::BlfConverter::Result;

namespace {

using Reports = std::vector<std::string>; // an error begins with "!"

class BlfConversion : public testing::Test
{
protected:
    void SetUp() override
    {
        job.inputPath = QStringLiteral("a.blf");
        job.outputPath = QStringLiteral("a.out");
    }

    static void makeLog(int frames)
    {
        tztest::BlfTestWriter log;
        const tztest::BlfBytes object = tztest::blfObject(tztest::CanMessageBody{.id = 0x123});
        for (int i = 0; i < frames; ++i)
            log.addRaw(object);
        ASSERT_TRUE(log.save(QStringLiteral("a.blf")));
    }

    Result convert()
    {
        BlfConverter converter(
            &parser, {.report = [this](const QString &text,
                                       bool isError) { reports.push_back((isError ? "!" : "") + text.toStdString()); },
                      .mayGoOn = [this] { return mayGoOn(); }});
        return converter.convert(job);
    }

    /// Makes each frame cost so much time that a pulse is due whenever the parser looks at the clock.
    void slowParserDown()
    {
        QObject::connect(&parser, qOverload<const QString &>(&BLF::BLFParser::sigProcessReport), &parser, [] {
            const auto end = std::chrono::steady_clock::now() + std::chrono::microseconds(60);
            while (std::chrono::steady_clock::now() < end) {
            }
        });
    }

    static QByteArray output()
    {
        QFile file(QStringLiteral("a.out"));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    static constexpr int framesOfThreePulses = 3 * int{BLF::BlfPulse::stepsBetweenBeats};

    const tztest::TempWorkDir workDir;
    const tztest::LogCapture log;
    BLF::BLFParser parser;
    BlfConversionJob job;
    std::function<bool()> mayGoOn = [] { return true; };
    Reports reports;
};

} // namespace

TEST_F(BlfConversion, TellsTheStepsToCsv)
{
    makeLog(3);
    EXPECT_EQ(convert(), Result::Succeeded);
    EXPECT_EQ(reports, (Reports{"Starting to parse BLF file: a.blf", "Parsing complete, read 3 frames",
                                "Starting conversion to CSV format...", "Successfully saved CSV file: a.out"}));
    EXPECT_TRUE(output().startsWith("Time,Channel,ID,"));
    EXPECT_EQ(output().count('\n'), 4);
}

TEST_F(BlfConversion, TellsTheStepsToAsc)
{
    makeLog(3);
    job.format = BLF::TextFormat::Asc;
    EXPECT_EQ(convert(), Result::Succeeded);
    EXPECT_EQ(reports, (Reports{"Starting to parse BLF file: a.blf", "Parsing complete, read 3 frames",
                                "Starting conversion to ASC format...", "Successfully saved ASC file: a.out"}));
    EXPECT_TRUE(output().endsWith("End TriggerBlock\n"));
}

TEST_F(BlfConversion, APercentSignInAPathStaysWhatItIs)
{
    makeLog(1);
    job.outputPath = QStringLiteral("100%1%2.csv");
    EXPECT_EQ(convert(), Result::Succeeded);
    EXPECT_EQ(reports.back(), "Successfully saved CSV file: 100%1%2.csv");
    EXPECT_TRUE(QFileInfo(job.outputPath).isFile());
}

TEST_F(BlfConversion, TellsThatALogIsDamaged)
{
    makeLog(3);
    QFile file(job.inputPath);
    ASSERT_TRUE(file.resize(file.size() - 20));
    EXPECT_EQ(convert(), Result::Succeeded);
    ASSERT_EQ(reports.size(), 5U);
    EXPECT_EQ(reports[1], "!Not all of the file could be read: the program's log tells what is missing");
    EXPECT_EQ(reports[2], "Parsing complete, read 2 frames");
    EXPECT_EQ(output().count('\n'), 3);
}

TEST_F(BlfConversion, TellsThatTheMemoryWasNotEnoughForAll)
{
    makeLog(3);
    parser.setMemoryBudget(2 * (sizeof(BLF::BlfFrame) + 8));
    EXPECT_EQ(convert(), Result::Succeeded);
    ASSERT_EQ(reports.size(), 5U);
    EXPECT_EQ(reports[1], "!Not all of the file could be read: the program's log tells what is missing");
    EXPECT_EQ(reports[2], "Parsing complete, read 2 frames");
}

TEST_F(BlfConversion, AFileThatCannotBeParsedFails)
{
    ASSERT_TRUE(tztest::saveBytes(job.inputPath, tztest::BlfBytes(200, 'x')));
    EXPECT_EQ(convert(), Result::Failed);
    EXPECT_EQ(reports, (Reports{"Starting to parse BLF file: a.blf", "!Failed to parse BLF file"}));
    EXPECT_TRUE(log.has(3, "BLCreateFile failed: a.blf"));
    EXPECT_FALSE(QFileInfo::exists(job.outputPath));
}

TEST_F(BlfConversion, AFolderThatIsNotThereFailsTheSave)
{
    makeLog(1);
    job.outputPath = QStringLiteral("none/a.out");
    EXPECT_EQ(convert(), Result::Failed);
    EXPECT_EQ(reports.back(), "!Failed to save CSV file");
    job.format = BLF::TextFormat::Asc;
    EXPECT_EQ(convert(), Result::Failed);
    EXPECT_EQ(reports.back(), "!Failed to save ASC file");
}

TEST_F(BlfConversion, AFullDiskFailsTheSaveAndLeavesWhatCame)
{
    makeLog(5000);
    {
        const tztest::FileSizeLimit limit(64 * 1024);
        EXPECT_EQ(convert(), Result::Failed);
    }
    EXPECT_EQ(reports.back(), "!Failed to save CSV file");
    EXPECT_EQ(output().size(), 64 * 1024);
}

TEST_F(BlfConversion, GivenUpAtAnyStepItEndsThere)
{
    makeLog(3);
    for (std::size_t steps = 1; steps <= 3; ++steps) {
        reports.clear();
        mayGoOn = [&] { return reports.size() < steps; };
        EXPECT_EQ(convert(), Result::GivenUp);
        EXPECT_EQ(reports.size(), steps);
        EXPECT_FALSE(QFileInfo::exists(job.outputPath)) << steps;
    }
}

TEST_F(BlfConversion, GivenUpAmidTheParseItEndsThere)
{
    makeLog(framesOfThreePulses);
    slowParserDown();
    int calls = 0;
    mayGoOn = [&] { return ++calls < 3; }; // the first is that of the first report
    EXPECT_EQ(convert(), Result::GivenUp);
    EXPECT_EQ(reports.size(), std::size_t{1});
    EXPECT_EQ(calls, 3);
    EXPECT_TRUE(log.has(2, "BLF conversion given up: a.blf"));
}

TEST_F(BlfConversion, GivenUpAmidTheSaveItLeavesWhatCame)
{
    constexpr int frames = 500'000;
    makeLog(frames);
    std::optional<tztest::BlfSlowWork> slowSave;
    mayGoOn = [&] {
        if (reports.size() < 3)
            return true;
        if (!slowSave)
            slowSave.emplace(2 * BLF::BlfPulse::interval); // the save is about to begin
        return output().isEmpty();
    };
    EXPECT_EQ(convert(), Result::GivenUp);
    EXPECT_EQ(reports.size(), std::size_t{3});
    EXPECT_GT(output().size(), 0);
    EXPECT_LT(output().count('\n'), frames + 1);
}

TEST_F(BlfConversion, TooLittleMemoryFails)
{
    makeLog(3);
    mayGoOn = []() -> bool { throw std::bad_alloc(); };
    EXPECT_EQ(convert(), Result::Failed);
    EXPECT_EQ(reports.back(), "!Not enough memory for the frames of this file");
    EXPECT_EQ(log.countContaining(3, "BLF conversion failed: a.blf"), std::size_t{1});
}

TEST_F(BlfConversion, AnyOtherExceptionFails)
{
    makeLog(3);
    mayGoOn = []() -> bool { throw std::runtime_error("odd"); };
    EXPECT_EQ(convert(), Result::Failed);
    EXPECT_EQ(reports.back(), "!The conversion broke off: odd");
}

TEST_F(BlfConversion, TheParserIsLeftWithoutAPulse)
{
    makeLog(framesOfThreePulses);
    slowParserDown();
    EXPECT_EQ(convert(), Result::Succeeded);
    mayGoOn = []() -> bool { throw std::logic_error("called after the end"); };
    BLF::BlfFrames frames;
    EXPECT_TRUE(parser.parseFile(job.inputPath, frames));
    EXPECT_EQ(frames.size(), std::size_t{framesOfThreePulses});
}
