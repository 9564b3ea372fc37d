// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciTexts.h"

#include "vci/TzVciByteOrder.h"
#include "vci/TzVciCanDataType.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace {

struct TextCase
{
    const char *name;
    QString (*text)(std::uint8_t);
    std::uint8_t value;
    const char *expected;
};

class FieldText : public testing::TestWithParam<TextCase>
{
};

std::string errorText(std::uint32_t code)
{
    std::array<std::uint8_t, 4> data{};
    TzVciByteOrder::store(data.data(), code);
    return canErrorText(data.data(), 4).toStdString();
}

} // namespace

TEST_P(FieldText, ReadsAsTheUserKnowsIt)
{
    EXPECT_EQ(GetParam().text(GetParam().value).toStdString(), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Can, FieldText,
                         testing::Values(TextCase{"FormatClassic", canFrameFormatText, 0x00, "CAN"},
                                         TextCase{"FormatFd", canFrameFormatText, 0x40, "CANFD"},
                                         TextCase{"FormatFdWithSwitch", canFrameFormatText, 0x48, "CANFDBRS"},
                                         TextCase{"FormatBitRateSwitchWithoutFdIsCan", canFrameFormatText, 0x08, "CAN"},
                                         TextCase{"FormatIgnoresOtherFlags", canFrameFormatText, 0xF7, "CANFD"},
                                         TextCase{"DirectionTx", canDirectionText, 1, "Tx"},
                                         TextCase{"DirectionRx", canDirectionText, 2, "Rx"},
                                         TextCase{"DirectionError", canDirectionText, 4, "Err"},
                                         TextCase{"DirectionError2", canDirectionText, 8, "Err"},
                                         TextCase{"DirectionZero", canDirectionText, 0, "Err"},
                                         TextCase{"DirectionBothBits", canDirectionText, 3, "Err"},
                                         TextCase{"IdStandard", canIdTypeText, 0xFE, "Standard"},
                                         TextCase{"IdExtend", canIdTypeText, 0x01, "Extend"},
                                         TextCase{"KindData", canFrameKindText, 0xFD, "Data"},
                                         TextCase{"KindRemote", canFrameKindText, 0x02, "Remote"}),
                         [](const auto &test) { return std::string(test.param.name); });

INSTANTIATE_TEST_SUITE_P(Lin, FieldText,
                         testing::Values(TextCase{"ChecksumClassic", linChecksumTypeText, 0, "Standard"},
                                         TextCase{"ChecksumEnhanced", linChecksumTypeText, 1, "Enhanced"},
                                         TextCase{"ChecksumUnknown", linChecksumTypeText, 2, "Standard"},
                                         TextCase{"DirectionMasterRead", linDirectionText, 0, "Rx"},
                                         TextCase{"DirectionSlaveRead", linDirectionText, 1, "Rx"},
                                         TextCase{"DirectionTwoIsTx", linDirectionText, 2, "Tx"},
                                         TextCase{"DirectionMasterWrite", linDirectionText, 16, "Tx"},
                                         TextCase{"DirectionSlaveWrite", linDirectionText, 17, "Tx"},
                                         TextCase{"TypeMasterRead", linFrameTypeText, 0, "Master Read"},
                                         TextCase{"TypeSlaveRead", linFrameTypeText, 1, "Slave Read"},
                                         TextCase{"TypeTwoIsMasterRead", linFrameTypeText, 2, "Master Read"},
                                         TextCase{"TypeMasterWrite", linFrameTypeText, 16, "Master Write"},
                                         TextCase{"TypeSlaveWrite", linFrameTypeText, 17, "Slave Write"},
                                         TextCase{"ActionZeroIsUnknown", linActionText, 0, "Unknown"},
                                         TextCase{"ActionOne", linActionText, 1, "Head&Resp"},
                                         TextCase{"ActionHeader", linActionText, 2, "Header"},
                                         TextCase{"ActionResponse", linActionText, 3, "Response"},
                                         TextCase{"ActionFourIsHeadAndResponse", linActionText, 4, "Head&Resp"},
                                         TextCase{"ActionFive", linActionText, 5, "Unknown"},
                                         TextCase{"ActionClear", linActionText, 12, "Clear"}),
                         [](const auto &test) { return std::string(test.param.name); });

TEST(CanErrorText, ErrorRecordWithoutFourBytesIsUnknownErrorNotADump)
{
    TzVciCanDataType frame;
    frame.frameType = TzVciCanFrameType::error;
    for (int length : {0, 1, 3, 5, 8, 64, 255}) {
        frame.dataLength = static_cast<std::uint8_t>(length);
        EXPECT_EQ(canErrorText(frame.data.data(), frame.dataLength).toStdString(), "Unknown error") << length;
    }
}

TEST(CanErrorText, NullIsUnknownError)
{
    EXPECT_EQ(canErrorText(nullptr, 4).toStdString(), "Unknown error");
}

TEST(CanErrorText, TwoBitsAtOnceAreAnUnknownCode)
{
    EXPECT_EQ(errorText(3), "Unknown error code: 0x3");
}

TEST(CanErrorText, UnknownCodesAreLowerCaseHexWithoutPadding)
{
    EXPECT_EQ(errorText(16384), "Unknown error code: 0x4000");
    EXPECT_EQ(errorText(0xABCDEF), "Unknown error code: 0xabcdef");
    EXPECT_EQ(errorText(0xFFFFFFFF), "Unknown error code: 0xffffffff");
    EXPECT_EQ(errorText(0x80000), "Unknown error code: 0x80000");
    EXPECT_EQ(errorText(0x100000), "Unknown error code: 0x100000");
    EXPECT_EQ(errorText(0x200000), "Unknown error code: 0x200000");
}

TEST(CanErrorText, EveryKnownCodeHasItsText)
{
    const std::vector<std::pair<std::uint32_t, const char *>> expected{
        {0, "No error"},
        {1, "Timeout error"},
        {2, "Peripheral not initialized"},
        {4, "Peripheral not ready"},
        {8, "Peripheral not started"},
        {16, "Mode not supported"},
        {32, "Parameter error"},
        {64, "Pending operation"},
        {128, "Message RAM Access Failure"},
        {256, "Put element in full FIFO"},
        {512, "Global Time Error : Synchronization deviation exceeded limit"},
        {1024, "Tx Count Underflow : Less Tx trigger than expected in one matrix cycle"},
        {2048, "Tx Count Overflow : More Tx trigger than expected in one matrix cycle"},
        {4096, "Scheduling error 1"},
        {8192, "Scheduling error 2"},
        {32768, "No system startup due to missing reference message"},
        {0x10000, "Missing reference message"},
        {0x20000, "Application watchdog not served in time"},
        {0x40000, "Error found in trigger list"},
        {0x400000, "Overflow of CAN Error Logging Counter"},
        {0x4000000, "Message RAM Watchdog event occurred"},
        {0x8000000, "Protocol Error in Arbitration Phase (Nominal Bit Time is used)"},
        {0x10000000, "Protocol Error in Data Phase (Data Bit Time is used)"},
        {0x20000000, "Access to Reserved Address"},
    };
    for (const auto &[code, text] : expected)
        EXPECT_EQ(errorText(code), text);
}
