// SPDX-License-Identifier: GPL-3.0-or-later
// The descriptions and reports, character for character.
#include "logging/blf/BlfRecordText.h"
#include "logging/blf/BlfRecords.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

using namespace BLF;

namespace {

template <typename Object> std::string description(const Object &object)
{
    return makeRecord(ObjectHeader{}, object).description.toStdString();
}

template <typename Number> std::vector<std::byte> valueOf(Number number)
{
    std::vector<std::byte> bytes(sizeof(number));
    std::memcpy(bytes.data(), &number, sizeof(number));
    return bytes;
}

std::vector<std::byte> valueOf(std::string_view text)
{
    const auto bytes = std::as_bytes(std::span(text));
    return {bytes.begin(), bytes.end()};
}

std::string variable(std::uint32_t type, std::string_view name, const std::vector<std::byte> &value)
{
    return description(SystemVariable{.type = type, .name = name, .value = value});
}

TEST(BlfFrameTypeText, EachNumberHasItsOwn)
{
    const std::vector<std::string> texts{"Data",     "RTR",     "Error",  "FD_Error",  "Driver_Error",
                                         "Overload", "Setting", "SysVar", "Statistic", "Unknown"};
    for (std::uint32_t type = 0; type < texts.size(); ++type)
        EXPECT_EQ(frameTypeText(type), texts[type]);
    EXPECT_EQ(frameTypeText(std::numeric_limits<std::uint32_t>::max()), "Unknown");
}

TEST(BlfDescription, StatisticNamesDataBeforeRemote)
{
    const CanStatistic object{.busLoad = 361,
                              .standardDataFrames = 1,
                              .extendedDataFrames = 2,
                              .standardRemoteFrames = 3,
                              .extendedRemoteFrames = 4,
                              .errorFrames = 5,
                              .overloadFrames = 6};
    EXPECT_EQ(description(object), "Statistic: D 1 R 3 XD 2 XR 4 E 5 O 6 B 3.61%");
}

TEST(BlfDescription, StatisticShowsHundredthsInTwoDigits)
{
    EXPECT_EQ(description(CanStatistic{}), "Statistic: D 0 R 0 XD 0 XR 0 E 0 O 0 B 0.00%");
    EXPECT_EQ(description(CanStatistic{.busLoad = 105}), "Statistic: D 0 R 0 XD 0 XR 0 E 0 O 0 B 1.05%");
    EXPECT_EQ(description(CanStatistic{.busLoad = 10'000}), "Statistic: D 0 R 0 XD 0 XR 0 E 0 O 0 B 100.00%");
}

TEST(BlfDescription, StatisticOfAnUnknownLoadShowsZero)
{
    EXPECT_EQ(description(CanStatistic{.busLoad = 32'768}), "Statistic: D 0 R 0 XD 0 XR 0 E 0 O 0 B 0.00%");
    EXPECT_EQ(description(CanStatistic{.busLoad = 32'769}), "Statistic: D 0 R 0 XD 0 XR 0 E 0 O 0 B 327.69%");
    EXPECT_EQ(description(CanStatistic{.busLoad = 65'535, .overloadFrames = 4'294'967'295}),
              "Statistic: D 0 R 0 XD 0 XR 0 E 0 O 4294967295 B 655.35%");
}

TEST(BlfDescription, DriverErrorHasNoCountsWhereBothAreZero)
{
    EXPECT_EQ(description(CanDriverError{.errorCode = 0x68}), "DriverError: ErrorCode:0x68 ErrorCount: ");
    EXPECT_EQ(description(CanDriverError{.errorCode = 0xABCDEF}), "DriverError: ErrorCode:0xabcdef ErrorCount: ");
}

TEST(BlfDescription, DriverErrorHasBothCountsWhereOneIsNotZero)
{
    EXPECT_EQ(description(CanDriverError{.txErrors = 96, .rxErrors = 255, .errorCode = 0x73}),
              "DriverError: ErrorCode:0x73 ErrorCount: TxErr: 96 RxErr: 255");
    EXPECT_EQ(description(CanDriverError{.txErrors = 1}), "DriverError: ErrorCode:0x0 ErrorCount: TxErr: 1 RxErr: 0");
    EXPECT_EQ(description(CanDriverError{.rxErrors = 2}), "DriverError: ErrorCode:0x0 ErrorCount: TxErr: 0 RxErr: 2");
}

TEST(BlfDescription, VariableOfEachType)
{
    EXPECT_EQ(variable(1, "a", valueOf(3.14159265)), "SV: 1 a = 3.142");
    EXPECT_EQ(variable(2, "::Bench::Mode", valueOf(std::int32_t{-7})), "SV: 2 ::Bench::Mode = -7");
    EXPECT_EQ(variable(3, "t", valueOf(std::string_view("on"))), "SV: 3 t = \"on\"");
    EXPECT_EQ(variable(6, "l", valueOf(std::numeric_limits<std::int64_t>::min())), "SV: 6 l = -9223372036854775808");
    for (const std::uint32_t type : {0U, 4U, 5U, 7U, 8U, 4'294'967'295U}) {
        EXPECT_EQ(variable(type, "x", valueOf(std::int64_t{99})), "SV: " + std::to_string(type) + " x = 0");
    }
}

TEST(BlfDescription, DoublesHaveFourDigitsInTheShorterForm)
{
    EXPECT_EQ(variable(1, "d", valueOf(0.0)), "SV: 1 d = 0");
    EXPECT_EQ(variable(1, "d", valueOf(-12.5)), "SV: 1 d = -12.5");
    EXPECT_EQ(variable(1, "d", valueOf(1e6)), "SV: 1 d = 1e+06");
    EXPECT_EQ(variable(1, "d", valueOf(12'345.678)), "SV: 1 d = 1.235e+04");
    EXPECT_EQ(variable(1, "d", valueOf(0.000012345)), "SV: 1 d = 1.234e-05");
    EXPECT_EQ(variable(1, "d", valueOf(std::numeric_limits<double>::infinity())), "SV: 1 d = inf");
    EXPECT_EQ(variable(1, "d", valueOf(std::nan(""))), "SV: 1 d = nan");
}

TEST(BlfDescription, VariableWhoseValueIsTooShortForItsTypeIsZero)
{
    EXPECT_EQ(variable(1, "d", valueOf(1.0F)), "SV: 1 d = 0");
    EXPECT_EQ(variable(2, "i", {}), "SV: 2 i = 0");
    EXPECT_EQ(variable(6, "l", valueOf(std::int32_t{5})), "SV: 6 l = 0");
    EXPECT_EQ(variable(2, "i", valueOf(std::int64_t{5})), "SV: 2 i = 5") << "longer is no harm";
}

TEST(BlfDescription, EmptyTextIsQuoted)
{
    EXPECT_EQ(variable(3, "t", {}), "SV: 3 t = \"\"");
    EXPECT_EQ(variable(3, "", valueOf(std::string_view("\0hidden", 7))), "SV: 3  = \"\"");
}

TEST(BlfDescription, PlaceholdersInTextsOfTheFileStayAsTheyAre)
{
    EXPECT_EQ(variable(2, "%3 %1 %2 %%", valueOf(std::int32_t{4})), "SV: 2 %3 %1 %2 %% = 4");
    EXPECT_EQ(variable(3, "%2", valueOf(std::string_view("%1%3"))), "SV: 3 %2 = \"%1%3\"");
    EXPECT_EQ(variable(3, "%L1", valueOf(std::string_view("%10"))), "SV: 3 %L1 = \"%10\"");
}

TEST(BlfDescription, ExtendedErrorFrameWithData)
{
    const CanErrorFrameExt object{.flags = 0xFFFE,
                                  .ecc = 0xA2,
                                  .position = 12,
                                  .dlc = 0x12,
                                  .frameLength = 64'000,
                                  .id = 0x8000'0ABC,
                                  .flagsExt = 0x20A2,
                                  .data = {0x0F, 0xF0, 1, 1, 1, 1, 1, 1}};
    EXPECT_EQ(description(object), "ErrorFrame Flags = 0xfffe CodeExt = 0x20a2 Code = 0xa2 ID = 0xabc DLC = 2 "
                                   "Position = 12 Length = 64000 Data = 0f f0");
}

TEST(BlfDescription, ExtendedErrorFrameWithoutDataEndsInABlank)
{
    CanErrorFrameExt object{.dlc = 0xF0, .id = 0xFFFF'FFFF, .data = {1, 2, 3, 4, 5, 6, 7, 8}};
    EXPECT_EQ(description(object), "ErrorFrame Flags = 0x0 CodeExt = 0x0 Code = 0x0 ID = 0x7fffffff DLC = 0 "
                                   "Position = 0 Length = 0 ");
    object.dlc = 15;
    EXPECT_EQ(description(object), "ErrorFrame Flags = 0x0 CodeExt = 0x0 Code = 0x0 ID = 0x7fffffff DLC = 15 "
                                   "Position = 0 Length = 0 Data = 01 02 03 04 05 06 07 08");
}

CanFdErrorFrame64 fdError()
{
    CanFdErrorFrame64 object{.dlc = 9,
                             .validDataBytes = 3,
                             .ecc = 0x81,
                             .flags = 0x2F,
                             .errorCodeExt = 0x207B,
                             .extFlags = 0x0F,
                             .id = 0x98DA'F110,
                             .frameLength = 1000,
                             .btrCfgArb = 0x4650'0250,
                             .btrCfgData = 0x4B28'0150,
                             .timeOffsetBrsNs = 20,
                             .timeOffsetCrcDelNs = 30,
                             .crc = 0xFACE,
                             .errorPosition = 65'535,
                             .storedBytes = 64};
    object.data = {0xAB, 0x00, 0x01};
    return object;
}

TEST(BlfDescription, FdErrorFrameHasAllFieldsInOrder)
{
    EXPECT_EQ(description(fdError()), "Rx ErrorCode: 0x81 0x2f 0x207b Data 1 1 0x18daf110 1000 0x46500250 0x4b280150 "
                                      "20 30 0xface 65535 9 3 ab 00 01");
}

TEST(BlfDescription, FdErrorFrameInTheArbitrationPhaseWithoutFlagsAndData)
{
    CanFdErrorFrame64 object;
    EXPECT_EQ(description(object), "Tx ErrorCode: 0x0 0x0 0x0 Arb. 0 0 0x0 0 0x0 0x0 0 0 0x0 0 0 0 ");
    object.extFlags = 0x02;
    EXPECT_EQ(description(object), "Tx ErrorCode: 0x0 0x0 0x0 Arb. 1 0 0x0 0 0x0 0x0 0 0 0x0 0 0 0 ");
    object.extFlags = 0x04;
    EXPECT_EQ(description(object), "Tx ErrorCode: 0x0 0x0 0x0 Arb. 0 1 0x0 0 0x0 0x0 0 0 0x0 0 0 0 ");
    object.extFlags = 0xFFF8;
    EXPECT_EQ(description(object), "Tx ErrorCode: 0x0 0x0 0x0 Data 0 0 0x0 0 0x0 0x0 0 0 0x0 0 0 0 ");
}

TEST(BlfDescription, BitTimingWords)
{
    EXPECT_EQ(description(CanSettingChanged{.changedType = 1, .btrExtArb = 0x2001'1736, .btrExtData = 0xABC}),
              "BitTimingChanged ArbSettings : 20011736 DataSettings abc");
    EXPECT_EQ(description(CanSettingChanged{.changedType = 0, .btrExtArb = 1, .btrExtData = 1}), "CAN reseted");
}

TEST(BlfFileText, IsUtf8WhereThatIsValidElseLatin1)
{
    EXPECT_EQ(fileText("Motor"), QStringLiteral("Motor"));
    EXPECT_EQ(fileText("T\xC3\xBCr"), QString::fromUtf8("T\xC3\xBCr"));
    EXPECT_EQ(fileText("T\xFCr"), QString::fromUtf8("T\xC3\xBCr"));
    EXPECT_EQ(fileText("\xC3"), QString::fromLatin1("\xC3")) << "cut within a character";
    EXPECT_EQ(fileText("\xF0\x9F\x9A\x97"), QString::fromUtf8("\xF0\x9F\x9A\x97"));
    EXPECT_EQ(fileText("\xC0\xAF"), QString::fromLatin1("\xC0\xAF")) << "a longer form than needed is not valid";
}

TEST(BlfFileText, EndsAtTheFirstZero)
{
    EXPECT_EQ(fileText(std::string_view("ab\0\xFF", 4)), QStringLiteral("ab"));
    EXPECT_EQ(fileText(std::string_view("\0", 1)), QString());
    EXPECT_EQ(fileText({}), QString());
}

TEST(BlfFileText, OtherEndsOfLinesBecomeBlanksToo)
{
    EXPECT_EQ(fileText("a\xC2\x85"
                       "b\xE2\x80\xA8"
                       "c\xE2\x80\xA9"
                       "d"),
              QStringLiteral("a b c d"));
    EXPECT_EQ(fileText("\xE9\x85"), QString::fromLatin1("\xE9 "));
    EXPECT_EQ(fileText("\xC2\x84\xE2\x80\xA7"), QString::fromUtf8("\xC2\x84\xE2\x80\xA7")) << "their neighbours";
}

TEST(BlfFileText, ControlCharactersBecomeBlanks)
{
    EXPECT_EQ(fileText("a\r\nb\tc\x1F\x7F"), QStringLiteral("a  b c \x7F"));
    EXPECT_EQ(fileText("\xE9\n"), QString::fromLatin1("\xE9 "));
}

BlfFrame reported()
{
    BlfFrame record;
    record.time = 12.3456784;
    record.channel = 3;
    record.id = 0x18DAF110;
    record.dlc = 15;
    record.dir = QStringLiteral("Tx");
    record.data = QByteArray::fromHex("00abff");
    return record;
}

TEST(BlfReportText, HasTheMainFieldsInOrder)
{
    EXPECT_EQ(reportText(reported()).toStdString(),
              "Frame Parsed: Time=12.345678 Ch=3 Dir=Tx Type=Data ID=0x18DAF110 DLC=15 Data=00 ab ff");
    BlfFrame event;
    event.frameType = FrameType::statistic;
    EXPECT_EQ(reportText(event).toStdString(),
              "Frame Parsed: Time=0.000000 Ch=0 Dir= Type=Statistic ID=0x0 DLC=0 Data=");
    event.dir = QStringLiteral("%1%2");
    EXPECT_EQ(reportText(event).toStdString(),
              "Frame Parsed: Time=0.000000 Ch=0 Dir=%1%2 Type=Statistic ID=0x0 DLC=0 Data=");
}

TEST(BlfReportText, ErrorsAreTheTypesTwoToFive)
{
    for (std::uint32_t type = 0; type < 10; ++type) {
        BlfFrame record;
        record.frameType = type;
        EXPECT_EQ(isErrorReport(record), type >= 2 && type <= 5) << type;
    }
}

} // namespace
