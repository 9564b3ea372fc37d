// SPDX-License-Identifier: GPL-3.0-or-later
// LIN recordings byte for byte.
#include "tests/logging/FormattedLines.h"
#include "tests/logging/RecordMessages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using Common::LINLoggerConfig;
using tztest::linesOf;
using tztest::linMessage;
using tztest::risingBytes;

namespace {

LINLoggerConfig configOf(int format, bool logExtraInfo = false)
{
    LINLoggerConfig config;
    config.format = format;
    config.logExtraInfo = logExtraInfo;
    return config;
}

struct LineCase
{
    const char *name;
    TzVciMessage message;
    std::string asc;
    std::string csv;
};

class LinRecordLine : public testing::TestWithParam<LineCase>
{
};

TEST_P(LinRecordLine, IsWrittenByteForByte)
{
    EXPECT_EQ(linesOf(configOf(0), {GetParam().message}), GetParam().asc + '\n');
    EXPECT_EQ(linesOf(configOf(1), {GetParam().message}), GetParam().csv + '\n');
}

TEST_P(LinRecordLine, EndsWithIndexAndPidWhereExtraInformationIsWanted)
{
    EXPECT_EQ(linesOf(configOf(0, true), {GetParam().message}), GetParam().asc + " // Index:2 PID:6A\n");
    EXPECT_EQ(linesOf(configOf(1, true), {GetParam().message}), GetParam().csv + ",Index:2\n");
}

TzVciMessage changed(TzVciMessage message, void (*change)(TzVciLinDataType &))
{
    change(message.frame.lin);
    return message;
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, LinRecordLine,
    testing::Values(
        LineCase{"AMasterRead", linMessage({0xAB, 0x0C}), "0.000000 3 LIN Frame 2A 2 AB 0C C5",
                 "0.000000,3,0x2A,0x6A,Tx,Master Read,2,AB 0C,0xC5,Enhanced"},
        LineCase{"ASlaveRead", linMessage({0xAB}, TzVciLinDirection::slaveRead), "0.000000 3 LIN Frame 2A 1 AB C5",
                 "0.000000,3,0x2A,0x6A,Rx,Slave Read,1,AB,0xC5,Enhanced"},
        LineCase{"AMasterWrite", linMessage({0xAB}, TzVciLinDirection::masterWrite), "0.000000 3 LIN Frame 2A 1 AB C5",
                 "0.000000,3,0x2A,0x6A,Tx,Master Write,1,AB,0xC5,Enhanced"},
        LineCase{"ASlaveWrite", linMessage({0xAB}, TzVciLinDirection::slaveWrite), "0.000000 3 LIN Frame 2A 1 AB C5",
                 "0.000000,3,0x2A,0x6A,Rx,Slave Write,1,AB,0xC5,Enhanced"},
        LineCase{"AnUnknownDirection", linMessage({0xAB}, 2), "0.000000 3 LIN Frame 2A 1 AB C5",
                 "0.000000,3,0x2A,0x6A,-,Unknown,1,AB,0xC5,Enhanced"},
        LineCase{"AFrameOfLength0GoesStraightFromTheLengthToTheChecksum", linMessage({}),
                 "0.000000 3 LIN Frame 2A 0 C5", "0.000000,3,0x2A,0x6A,Tx,Master Read,0,,0xC5,Enhanced"},
        LineCase{"AFrameOfLength8", linMessage(risingBytes(8)), "0.000000 3 LIN Frame 2A 8 A0 A1 A2 A3 A4 A5 A6 A7 C5",
                 "0.000000,3,0x2A,0x6A,Tx,Master Read,8,A0 A1 A2 A3 A4 A5 A6 A7,0xC5,Enhanced"},
        LineCase{"ALengthBeyondTheRecordStopsAt8Bytes",
                 changed(linMessage(risingBytes(8)), [](TzVciLinDataType &lin) { lin.dataLength = 200; }),
                 "0.000000 3 LIN Frame 2A 200 A0 A1 A2 A3 A4 A5 A6 A7 C5",
                 "0.000000,3,0x2A,0x6A,Tx,Master Read,200,A0 A1 A2 A3 A4 A5 A6 A7,0xC5,Enhanced"},
        LineCase{"AClassicChecksumAndSmallNumbers",
                 changed(linMessage({0x01}),
                         [](TzVciLinDataType &lin) {
                             lin.linId = 0x0F;
                             lin.checksum = 0x0E;
                             lin.checksumType = 0;
                         }),
                 "0.000000 3 LIN Frame 0F 1 01 0E", "0.000000,3,0x0F,0x6A,Tx,Master Read,1,01,0x0E,Standard"},
        LineCase{"AnIdBeyondItsSixBitsIsShownAsItIs",
                 changed(linMessage({0x01}), [](TzVciLinDataType &lin) { lin.linId = 0xFF; }),
                 "0.000000 3 LIN Frame FF 1 01 C5", "0.000000,3,0xFF,0x6A,Tx,Master Read,1,01,0xC5,Enhanced"}),
    [](const auto &test) { return std::string(test.param.name); });

TEST(LinRecordLines, TheDirectionChangesTheCsvLineAlone)
{
    const TzVciMessage read = linMessage({0x11}, TzVciLinDirection::masterRead);
    const TzVciMessage write = linMessage({0x11}, TzVciLinDirection::slaveWrite);
    EXPECT_EQ(linesOf(configOf(0), {read}), linesOf(configOf(0), {write}));
    EXPECT_NE(linesOf(configOf(1), {read}), linesOf(configOf(1), {write}));
}

TEST(LinRecordLines, RelativeTimeGivesInEveryLineTheDistanceToTheRecordBefore)
{
    LINLoggerConfig config;
    config.absoluteTime = false;
    EXPECT_EQ(linesOf(config, {linMessage({}, 0, 1'000'000), linMessage({}, 0, 1'500'000), linMessage({}, 0, 4'000'000),
                               linMessage({}, 0, 3'999'999)}),
              "0.000000 3 LIN Frame 2A 0 C5\n0.500000 3 LIN Frame 2A 0 C5\n2.500000 3 LIN Frame 2A 0 C5\n"
              "0.000001 3 LIN Frame 2A 0 C5\n");
}

TEST(LinRecordLines, AbsoluteTimeGivesTheDistanceToTheFirstRecord)
{
    EXPECT_EQ(linesOf(LINLoggerConfig(),
                      {linMessage({}, 0, 1'000'000), linMessage({}, 0, 1'500'000), linMessage({}, 0, 4'000'000)}),
              "0.000000 3 LIN Frame 2A 0 C5\n0.500000 3 LIN Frame 2A 0 C5\n3.000000 3 LIN Frame 2A 0 C5\n");
}

TEST(LinHeader, OfAnAscFileHasOneBlankBehindHexAndItsOwnVersion)
{
    for (const bool absoluteTime : {true, false}) {
        LINLoggerConfig config;
        config.absoluteTime = absoluteTime;
        const std::string header = tztest::makeFormatter(config)->header();
        const std::size_t lineEnd = header.find('\n');
        EXPECT_THAT(header.substr(0, lineEnd), testing::MatchesRegex(tztest::datePattern));
        EXPECT_EQ(header.substr(lineEnd + 1), std::string("base hex timestamps ") +
                                                  (absoluteTime ? "absolute" : "relative") +
                                                  "\n// version 9.0.0\n// generated by zarnek\nBegin TriggerBlock\n");
        EXPECT_EQ(tztest::makeFormatter(config)->footer(), "End TriggerBlock\n");
    }
}

TEST(LinHeader, OfACsvFileIsOneLine)
{
    const auto formatter = tztest::makeFormatter(configOf(1));
    EXPECT_EQ(formatter->header(), "Timestamp,Channel,ID,PID,Dir,Type,DLC,Data,CheckSum,CheckType\n");
    EXPECT_TRUE(formatter->footer().empty());
}

} // namespace
