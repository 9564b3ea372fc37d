// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfConversions.h"
#include "tests/database/ldf/LdfSource.h"
#include "tests/support/LogCapture.h"

#include <gtest/gtest.h>

namespace {

QString text(const char *latin)
{
    return QString::fromLatin1(latin);
}

TEST(LdfFrames, FrameWithId64FailsTheFileWhileAnUnknownPublisherOnlyDropsIt)
{
    tztest::LogCapture log;
    LdfSource source;
    source.frames += text("\nLost: 0x30, Ghost, 1 {\nError2, 0;\n}");
    const auto config = loadLdf(source);
    ASSERT_TRUE(config);
    EXPECT_EQ(config->frames.count(text("Lost")), 0U);
    EXPECT_TRUE(log.has(3, "Publisher 'Ghost' not found for frame 'Lost'"));
    source.frames.replace(text("0x30, Ghost"), text("64, Slave1"));
    EXPECT_FALSE(loadLdf(source));
}

TEST(LdfFrames, IdAndSizeAreCutToEightBits)
{
    LdfSource source;
    source.frames += text("\nWrapped: 0x110, Slave1, 257 {\nError2, 0;\n}\nNumbered: 010, Slave1, 1 {\nError2, 0;\n}");
    const auto config = loadLdf(source);
    ASSERT_TRUE(config);
    EXPECT_EQ(config->frames.at(text("Wrapped")).id, 0x10);
    EXPECT_EQ(config->frames.at(text("Wrapped")).size, 1);
    EXPECT_EQ(config->frames.at(text("Numbered")).id, 8); // a leading zero makes it octal
}

TEST(LdfFrames, LargestOnesAreTaken)
{
    LdfSource source;
    source.signalList += text("\nAll: 64, 0, Slave1, Master1;");
    source.frames += text("\nLargest: 63, Slave1, 8 {\nAll, 0;\n}");
    source.diagnosticSignals = text("Request: 64, 0;");
    source.diagnosticFrames = text("MasterReq: 0x3C {\nRequest, 0;\n}");
    const auto config = loadLdf(source);
    ASSERT_TRUE(config);
    EXPECT_EQ(config->frames.at(text("Largest")).id, 63);
    EXPECT_EQ(config->frames.at(text("Largest")).signals.size(), 1U);
    EXPECT_EQ(config->diagnosticFrames.at(text("MasterReq")).signals.size(), 1U);
}

TEST(LdfSchedules, PeriodsComeFromOrdinaryTables)
{
    LdfSource source;
    source.schedules = text("First {\nCommandFrame delay 10 ms;\n}\nSecond {\nCommandFrame delay 20 ms;\n}\n"
                            "InitTable {\nStatus1 delay 5 ms;\n}");
    const auto config = loadLdf(source);
    ASSERT_TRUE(config);
    const LdfFrame &command = config->frames.at(text("CommandFrame"));
    EXPECT_EQ(command.minPeriod, 10.0);
    EXPECT_EQ(command.maxPeriod, 20.0);
    const LdfFrame &onlyInit = config->frames.at(text("Status1"));
    EXPECT_EQ(onlyInit.minPeriod, 0.0);
    EXPECT_EQ(getFramePeriod(onlyInit), 100.0);
}

TEST(LdfSchedules, LineCommentsEndWithTheirLine)
{
    LdfSource source;
    source.schedules = text("T { // opens; here\n// Ghost delay 1 ms;\nCommandFrame delay 10 ms; // first; of two\n"
                            "Status1 delay 12.5ms; // last\n}\n"
                            "InitTable {\n// Ghost delay 1 ms;\nFreeFormat { 1, 0x02 } delay 5 ms; // done\n}");
    const auto config = loadLdf(source);
    ASSERT_TRUE(config);
    ASSERT_EQ(config->scheduleTables.size(), 2U);
    ASSERT_EQ(config->scheduleTables[0].entries.size(), 2U);
    EXPECT_EQ(config->scheduleTables[0].entries[1].frameName, text("Status1"));
    EXPECT_EQ(config->scheduleTables[0].entries[1].delay, 12.5);
    ASSERT_EQ(config->scheduleTables[1].entries.size(), 1U);
    EXPECT_EQ(config->scheduleTables[1].entries[0].command, text("FreeFormat"));
    EXPECT_EQ(config->scheduleTables[1].entries[0].arguments, QStringList({text("1"), text("0x02")}));
    EXPECT_EQ(config->scheduleTables[1].entries[0].delay, 5.0);
}

TEST(LdfSchedules, TableStillOpenAtTheEndIsDroppedWithAWarning)
{
    tztest::LogCapture log;
    LdfSource source;
    source.schedules += text("\nSingleLine { Status1 delay 5 ms; }");
    const auto config = loadLdf(source);
    ASSERT_TRUE(config);
    EXPECT_EQ(config->scheduleTables.size(), 1U);
    EXPECT_TRUE(log.has(2, "Schedule table 'SingleLine' is not closed, it is left out"));
}

TEST(LdfSchedules, TableEndsOnlyOnTheLineThatBringsItsDepthToZero)
{
    LdfSource source;
    // The opening line counts as one brace; two closing ones make the depth negative, and one more is needed.
    source.schedules = text("T { {\nStatus1 delay 5 ms }}\n{\n}\nNext {\nStatus2 delay 7 ms;\n}");
    const auto config = loadLdf(source);
    ASSERT_TRUE(config);
    ASSERT_EQ(config->scheduleTables.size(), 2U);
    EXPECT_EQ(config->scheduleTables[0].name, text("T"));
    ASSERT_EQ(config->scheduleTables[0].entries.size(), 1U);
    EXPECT_EQ(config->scheduleTables[0].entries[0].frameName, text("Status1"));
    EXPECT_EQ(config->scheduleTables[1].name, text("Next"));
    EXPECT_EQ(config->scheduleTables[1].entries.size(), 1U);
}

TEST(LdfSchedules, TwoClosingBracesOnOneLineDoNotEndATable)
{
    tztest::LogCapture log;
    LdfSource source;
    source.schedules += text("\nT { {\nStatus1 delay 5 ms;\n}}");
    const auto config = loadLdf(source);
    ASSERT_TRUE(config);
    EXPECT_EQ(config->scheduleTables.size(), 1U);
    EXPECT_TRUE(log.has(2, "Schedule table 'T' is not closed, it is left out"));
}

TEST(LdfSchedules, TypesFollowTheNames)
{
    LdfSource source;
    source.schedules = text("ETFCollisionResolving {\n}\nInitTable {\n}\nMasterReqTable {\nMasterReq delay 5 ms;\n}\n"
                            "SlaveRespTable {\nSlaveResp delay 5 ms;\n}\nOther {\n}");
    const auto config = loadLdf(source);
    ASSERT_TRUE(config);
    std::vector<std::uint32_t> types;
    for (const LdfScheduleTable &table : config->scheduleTables)
        types.push_back(table.type);
    EXPECT_EQ(types, (std::vector<std::uint32_t>{3, 4, 6, 7, 1}));
}

TEST(LdfFrames, OtherNamesAmongDiagnosticFramesAreSkipped)
{
    LdfSource source;
    source.diagnosticSignals = text("B0: 8, 1;\nB1: 16, {1, 2};\nwhatever;");
    source.diagnosticFrames = text("Other: 0x3C {\nGhost, 0;\n}\nMasterReq: 60 {\nB0, 0;\nB1, 8;\n}");
    const auto config = loadLdf(source);
    ASSERT_TRUE(config);
    EXPECT_EQ(config->diagnosticFrames.size(), 2U);
    EXPECT_EQ(encodeFrame(config->diagnosticFrames.at(text("MasterReq"))), QByteArray::fromHex("0101020000000000"));
    EXPECT_TRUE(config->diagnosticFrames.at(text("SlaveResp")).signals.empty());
}

} // namespace
