// SPDX-License-Identifier: GPL-3.0-or-later
// CAN recordings byte for byte.
#include "tests/logging/FormattedLines.h"
#include "tests/logging/RecordMessages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using Common::CANLoggerConfig;
using tztest::canMessage;
using tztest::linesOf;
using tztest::risingBytes;

namespace {

constexpr std::uint8_t ext = TzVciCanFlag::extendedId;
constexpr std::uint8_t rtr = TzVciCanFlag::remote;
constexpr std::uint8_t brs = TzVciCanFlag::bitRateSwitch;
constexpr std::uint8_t fd = TzVciCanFlag::fd;
constexpr std::uint8_t tx = TzVciCanFrameType::transmitted;
constexpr std::uint8_t rx = TzVciCanFrameType::received;
constexpr std::uint8_t error = TzVciCanFrameType::error;
constexpr std::uint8_t error2 = TzVciCanFrameType::error2;

CANLoggerConfig csvConfig()
{
    CANLoggerConfig config;
    config.format = 1;
    return config;
}

// As if the device had sent another length than the bytes that it filled.
TzVciMessage withLength(TzVciMessage message, std::uint8_t length)
{
    message.frame.can.dataLength = length;
    return message;
}

std::string hexOf(std::size_t count)
{
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += (i == 0 ? "" : " ") + fmt::format("{:02x}", (0xA0 + i) & 0xFF);
    return text;
}

struct LineCase
{
    const char *name;
    TzVciMessage message;
    std::string asc;
    std::string csv;
};

class CanRecordLine : public testing::TestWithParam<LineCase>
{
};

TEST_P(CanRecordLine, IsWrittenByteForByte)
{
    EXPECT_EQ(linesOf(CANLoggerConfig(), {GetParam().message}), GetParam().asc + '\n');
    EXPECT_EQ(linesOf(csvConfig(), {GetParam().message}), GetParam().csv + '\n');
}

TEST_P(CanRecordLine, EndsWithTheDeviceIndexWhereExtraInformationIsWanted)
{
    CANLoggerConfig asc;
    asc.logExtraInfo = true;
    CANLoggerConfig csv = csvConfig();
    csv.logExtraInfo = true;
    EXPECT_EQ(linesOf(asc, {GetParam().message}), GetParam().asc + " // Index: 2\n");
    EXPECT_EQ(linesOf(csv, {GetParam().message}), GetParam().csv + ",Index:2\n");
}

const std::vector<std::uint8_t> eight{0x01, 0x23, 0x45, 0x67, 0x89, 0xab, 0xcd, 0xef};

INSTANTIATE_TEST_SUITE_P(
    Kinds, CanRecordLine,
    testing::Values(
        LineCase{"AClassicFrameOfLength8EndsWithItsEighthByte", canMessage(0x123, eight),
                 "0.000000 3 123 Rx d 8 01 23 45 67 89 ab cd ef",
                 "0.000000,3,0x123,Rx,DATA,8,01 23 45 67 89 ab cd ef,"},
        LineCase{"AStandardIdHasThreeDigits", canMessage(0x7, {0xff}, 0, tx), "0.000000 3 007 Tx d 1 ff",
                 "0.000000,3,0x007,Tx,DATA,1,ff,"},
        LineCase{"AnExtendedIdHasEightDigitsAndAnX", canMessage(0x18daf1, {0x3e}, ext),
                 "0.000000 3 0018daf1x Rx d 1 3e", "0.000000,3,0x0018daf1,Rx,DATA,1,3e,EXT"},
        LineCase{"AnIdWiderThanItsFlagSaysIsNotCut", canMessage(0xffffffff, {}), "0.000000 3 ffffffff Rx d 0",
                 "0.000000,3,0xffffffff,Rx,DATA,0,,"},
        LineCase{"AnEmptyFrameHasNoPayloadText", canMessage(0x100, {}), "0.000000 3 100 Rx d 0",
                 "0.000000,3,0x100,Rx,DATA,0,,"},
        LineCase{"ARemoteFrameHasALengthButNoData", canMessage(0x100, eight, rtr), "0.000000 3 100 Rx r 8",
                 "0.000000,3,0x100,Rx,RTR,8,,RTR"},
        LineCase{"ARemoteExtendedFrame", canMessage(0x100, {0x01}, rtr | ext, tx), "0.000000 3 00000100x Tx r 1",
                 "0.000000,3,0x00000100,Tx,RTR,1,,EXT|RTR"},
        LineCase{"AnErrorFrameShowsNoIdDirectionOrPayloadInAscAndIsADataRowInCsv",
                 canMessage(0x123, {0x01, 0x02}, 0, error), "0.000000 ErrorFrame 3",
                 "0.000000,3,0x123,Rx,DATA,2,01 02,"},
        LineCase{"AnErrorFrameWithFlagsIsOneAllTheSame", canMessage(0x123, {0x01}, fd | ext, error),
                 "0.000000 ErrorFrame 3", "0.000000,3,0x00000123,Rx,CANFD,1,01,EXT|FD"},
        LineCase{"TheSecondErrorClassIsADataFrame", canMessage(0x123, {0x01}, 0, error2), "0.000000 3 123 Rx d 1 01",
                 "0.000000,3,0x123,Rx,DATA,1,01,"},
        LineCase{"AnUnknownFrameTypeIsReceived", canMessage(0x123, {0x01}, 0, 0), "0.000000 3 123 Rx d 1 01",
                 "0.000000,3,0x123,Rx,DATA,1,01,"},
        LineCase{"AFastFrame", canMessage(0x123, {0x01, 0x02}, fd | brs, tx), "0.000000 CANFD 3 123 Tx 1 0 d 2 2 01 02",
                 "0.000000,3,0x123,Tx,CANFD,2,01 02,FD|BRS"},
        LineCase{"AnFdFrameWithoutBitRateSwitch", canMessage(0x123, {0x01}, fd | ext),
                 "0.000000 CANFD 3 00000123x Rx 0 0 d 1 1 01", "0.000000,3,0x00000123,Rx,CANFD,1,01,EXT|FD"},
        LineCase{"AnEmptyFdFrame", canMessage(0x123, {}, fd), "0.000000 CANFD 3 123 Rx 0 0 d 0 0",
                 "0.000000,3,0x123,Rx,CANFD,0,,FD"},
        LineCase{"ARemoteFdFrameHasNoData", canMessage(0x123, {0x01}, fd | rtr), "0.000000 CANFD 3 123 Rx 0 0 d 1 1",
                 "0.000000,3,0x123,Rx,RTR,1,,RTR|FD"},
        LineCase{"AllFlags", canMessage(0x123, {0x01}, ext | rtr | fd | brs), "0.000000 CANFD 3 00000123x Rx 1 0 d 1 1",
                 "0.000000,3,0x00000123,Rx,RTR,1,,EXT|RTR|FD|BRS"},
        LineCase{"ABitRateSwitchWithoutFdIsNone", canMessage(0x123, {0x01}, brs), "0.000000 3 123 Rx d 1 01",
                 "0.000000,3,0x123,Rx,DATA,1,01,"},
        LineCase{"UnknownFlagsAreNotShown", canMessage(0x123, {0x01}, 0xb4), "0.000000 3 123 Rx d 1 01",
                 "0.000000,3,0x123,Rx,DATA,1,01,"},
        LineCase{"AClassicLengthShowsItsLowerDigitInAsc", canMessage(0x123, risingBytes(12)),
                 "0.000000 3 123 Rx d c " + hexOf(12), "0.000000,3,0x123,Rx,DATA,12," + hexOf(12) + ","},
        LineCase{"AClassicLengthBeyondTheRecordStopsAt64Bytes", withLength(canMessage(0x123, risingBytes(64)), 255),
                 "0.000000 3 123 Rx d f " + hexOf(64), "0.000000,3,0x123,Rx,DATA,255," + hexOf(64) + ","},
        LineCase{"AnFdLengthBeyondTheRecordStopsAt64Bytes", withLength(canMessage(0x123, risingBytes(64), fd), 65),
                 "0.000000 CANFD 3 123 Rx 0 0 d 0 65 " + hexOf(64),
                 "0.000000,3,0x123,Rx,CANFD,65," + hexOf(64) + ",FD"}),
    [](const auto &test) { return std::string(test.param.name); });

using CanFdCode = testing::TestWithParam<std::pair<int, int>>;

TEST_P(CanFdCode, FollowsTheLength)
{
    const auto [length, code] = GetParam();
    const auto bytes = risingBytes(static_cast<std::size_t>(length));
    EXPECT_EQ(linesOf(CANLoggerConfig(), {canMessage(1, bytes, fd | brs)}),
              fmt::format("0.000000 CANFD 3 001 Rx 1 0 d {} {}{}{}\n", code, length, length == 0 ? "" : " ",
                          hexOf(bytes.size())));
}

INSTANTIATE_TEST_SUITE_P(Lengths, CanFdCode,
                         testing::Values(std::pair(0, 0), std::pair(1, 1), std::pair(2, 2), std::pair(3, 3),
                                         std::pair(4, 4), std::pair(5, 5), std::pair(6, 6), std::pair(7, 7),
                                         std::pair(8, 8), std::pair(9, 0), std::pair(11, 0), std::pair(12, 9),
                                         std::pair(13, 0), std::pair(16, 10), std::pair(20, 11), std::pair(24, 12),
                                         std::pair(32, 13), std::pair(48, 14), std::pair(63, 0), std::pair(64, 15)),
                         [](const auto &test) { return "Length" + std::to_string(test.param.first); });

struct HeaderCase
{
    const char *name;
    bool absoluteTime;
    bool logErrorFrames;
    std::string behindDate;
};

class CanAscHeader : public testing::TestWithParam<HeaderCase>
{
};

TEST_P(CanAscHeader, IsWrittenByteForByte)
{
    CANLoggerConfig config;
    config.absoluteTime = GetParam().absoluteTime;
    config.logErrorFrames = GetParam().logErrorFrames;
    const std::string header = tztest::makeFormatter(config)->header();
    const std::size_t lineEnd = header.find('\n');
    EXPECT_THAT(header.substr(0, lineEnd), testing::MatchesRegex(tztest::datePattern));
    EXPECT_EQ(header.substr(lineEnd + 1), GetParam().behindDate);
    EXPECT_EQ(tztest::makeFormatter(config)->footer(), "End TriggerBlock\n");
}

INSTANTIATE_TEST_SUITE_P(
    Settings, CanAscHeader,
    testing::Values(HeaderCase{"AbsoluteWithErrors", true, true,
                               "base hex  timestamps absolute\ninternal events logged\n// version 12.0.0\n"
                               "// generated by zarnek\nBegin TriggerBlock\n"},
                    HeaderCase{"RelativeWithoutErrors", false, false,
                               "base hex  timestamps relative\nno internal events logged\n// version 12.0.0\n"
                               "// generated by zarnek\nBegin TriggerBlock\n"}),
    [](const auto &test) { return std::string(test.param.name); });

TEST(CanCsvHeader, IsOneLineAndNothingClosesTheFile)
{
    const auto formatter = tztest::makeFormatter(csvConfig());
    EXPECT_EQ(formatter->header(), "Timestamp,Channel,ID,Dir,Type,DLC,Data,Flags\n");
    EXPECT_TRUE(formatter->footer().empty());
}

TEST(CanRecordLines, AnyFormatButZeroIsCsv)
{
    CANLoggerConfig config;
    config.format = -7;
    EXPECT_EQ(linesOf(config, {canMessage(1, {})}), "0.000000,3,0x001,Rx,DATA,0,,\n");
}

TEST(CanRecordLines, ErrorFramesLeftOutTakeNoPartInTheTimes)
{
    const std::vector<TzVciMessage> messages{canMessage(1, {}, 0, error, 100), canMessage(1, {}, 0, rx, 300),
                                             canMessage(1, {}, 0, error, 400), canMessage(1, {}, 0, error2, 500)};
    CANLoggerConfig config;
    config.logErrorFrames = false;
    config.absoluteTime = false;
    EXPECT_EQ(linesOf(config, messages), "0.000000 3 001 Rx d 0\n0.000200 3 001 Rx d 0\n");
    config.logErrorFrames = true;
    EXPECT_EQ(linesOf(config, messages), "0.000000 ErrorFrame 3\n0.000200 3 001 Rx d 0\n0.000100 ErrorFrame 3\n"
                                         "0.000100 3 001 Rx d 0\n");
}

TEST(CanRecordLines, TheLongestLineHasItsRoom)
{
    TzVciMessage first = canMessage(0, {}, 0, rx, std::uint64_t{1} << 63);
    TzVciMessage longest = withLength(canMessage(0xffffffff, risingBytes(64), ext | fd | brs), 255);
    longest.deviceIndex = 255;
    longest.channelIndex = 255;
    for (CANLoggerConfig config : {CANLoggerConfig(), csvConfig()}) {
        config.logExtraInfo = true;
        const std::string lines = linesOf(config, {first, longest});
        EXPECT_THAT(lines, testing::HasSubstr("\n-9223372036854.775808"));
        EXPECT_THAT(lines, testing::EndsWith(config.format == 0 ? "// Index: 255\n" : ",Index:255\n"));
    }
}

} // namespace
