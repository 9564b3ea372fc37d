// SPDX-License-Identifier: GPL-3.0-or-later
// CAN FD objects: how many data they hold, and where those end.
#include "tests/logging/blf/BlfOnDisk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

using namespace tztest;

namespace {

TEST(BlfFdObjects, CanFdMessageHasEveryField)
{
    BLF::CanFdMessage out;
    ASSERT_TRUE(
        BlfOnDisk(CanFdMessageBody{3, 0x41, 15, 0x7FF, 12'345, 33, 7, 64, 0, 0, countingArray<64>()}).decode(out));
    EXPECT_EQ(out.channel, 3);
    EXPECT_EQ(out.flags, 0x41);
    EXPECT_EQ(out.dlc, 15);
    EXPECT_EQ(out.id, 0x7FFu);
    EXPECT_EQ(out.frameLength, 12'345u);
    EXPECT_EQ(out.arbBitCount, 33);
    EXPECT_EQ(out.canFdFlags, 7);
    EXPECT_EQ(out.validDataBytes, 64);
    EXPECT_EQ(out.storedBytes, 64);
    EXPECT_EQ(out.data, countingArray<64>());
}

TEST(BlfFdObjects, CanFdMessageTellsHowManyBytesAreStored)
{
    BlfBytes body = bodyBytes(CanFdMessageBody{.data = countingArray<64>()});
    for (const std::size_t stored : {0u, 1u, 12u, 63u, 64u}) {
        body.resize(20 + stored);
        BLF::CanFdMessage out;
        out.data.fill(0xEE);
        ASSERT_TRUE(BlfOnDisk(CanFdMessageBody::type, body).decode(out));
        EXPECT_EQ(out.storedBytes, stored);
        for (std::size_t index = 0; index < 64; ++index)
            ASSERT_EQ(out.data[index], index < stored ? index + 1 : 0) << index;
        body = bodyBytes(CanFdMessageBody{.data = countingArray<64>()});
    }
}

TEST(BlfFdObjects, CanFdMessage64HasEveryField)
{
    const CanFdMessage64Body body{.channel = 200,
                                  .dlc = 9,
                                  .validDataBytes = 12,
                                  .txCount = 0x55,
                                  .id = 0x80000123,
                                  .frameLength = 1,
                                  .flags = 0x303000,
                                  .btrCfgArb = 0x46500250,
                                  .btrCfgData = 0x4B280150,
                                  .timeOffsetBrsNs = 2,
                                  .timeOffsetCrcDelNs = 3,
                                  .bitCount = 0x0405,
                                  .dir = 2,
                                  .crc = 0x80004645,
                                  .data = countingBytes(12)};
    BLF::CanFdMessage64 out;
    ASSERT_TRUE(BlfOnDisk(body).decode(out));
    EXPECT_EQ(out.channel, 200);
    EXPECT_EQ(out.dlc, 9);
    EXPECT_EQ(out.validDataBytes, 12);
    EXPECT_EQ(out.id, 0x80000123);
    EXPECT_EQ(out.frameLength, 1u);
    EXPECT_EQ(out.flags, 0x303000u);
    EXPECT_EQ(out.btrCfgArb, 0x46500250u);
    EXPECT_EQ(out.btrCfgData, 0x4B280150u);
    EXPECT_EQ(out.timeOffsetBrsNs, 2u);
    EXPECT_EQ(out.timeOffsetCrcDelNs, 3u);
    EXPECT_EQ(out.bitCount, 0x0405);
    EXPECT_EQ(out.dir, 2);
    EXPECT_EQ(out.crc, 0x80004645);
    EXPECT_EQ(out.storedBytes, 12);
}

TEST(BlfFdObjects, CanFdErrorFrame64HasEveryField)
{
    const CanFdErrorFrame64Body body{.channel = 4,
                                     .dlc = 15,
                                     .validDataBytes = 64,
                                     .ecc = 0xA2,
                                     .flags = 0x0102,
                                     .errorCodeExt = 0x20A2,
                                     .extFlags = 0x000F,
                                     .id = 0x321,
                                     .frameLength = 1,
                                     .btrCfgArb = 2,
                                     .btrCfgData = 3,
                                     .timeOffsetBrsNs = 4,
                                     .timeOffsetCrcDelNs = 5,
                                     .crc = 6,
                                     .errorPosition = 0x0708,
                                     .data = countingBytes(64),
                                     .extension = FdExtension{9, 10}};
    BLF::CanFdErrorFrame64 out;
    ASSERT_TRUE(BlfOnDisk(body).decode(out));
    EXPECT_EQ(out.channel, 4);
    EXPECT_EQ(out.dlc, 15);
    EXPECT_EQ(out.validDataBytes, 64);
    EXPECT_EQ(out.ecc, 0xA2);
    EXPECT_EQ(out.flags, 0x0102);
    EXPECT_EQ(out.errorCodeExt, 0x20A2);
    EXPECT_EQ(out.extFlags, 0x000F);
    EXPECT_EQ(out.id, 0x321u);
    EXPECT_EQ(out.frameLength, 1u);
    EXPECT_EQ(out.btrCfgArb, 2u);
    EXPECT_EQ(out.btrCfgData, 3u);
    EXPECT_EQ(out.timeOffsetBrsNs, 4u);
    EXPECT_EQ(out.timeOffsetCrcDelNs, 5u);
    EXPECT_EQ(out.crc, 6u);
    EXPECT_EQ(out.errorPosition, 0x0708);
    EXPECT_EQ(out.storedBytes, 64);
    EXPECT_EQ(out.data, countingArray<64>());
}

constexpr int noOffset = -1000;

struct ExtensionCase
{
    const char *name;
    std::size_t stored;         // bytes behind the fixed fields, extension not counted
    std::uint8_t valid;         // as the object says
    bool hasExtension;          // 8 bytes behind the data
    int offset;                 // said instead of the true offset; counted from the end of the fixed fields
    std::size_t expectedStored; // bytes that are data
};

class BlfFdData : public testing::TestWithParam<ExtensionCase>
{
protected:
    template <typename Object, typename Body> void check(std::size_t fixedSize)
    {
        const ExtensionCase &test = GetParam();
        Body body{.validDataBytes = test.valid, .data = countingBytes(test.stored)};
        if (test.hasExtension)
            body.extension = FdExtension{0xEEEEEEEE, 0xEEEEEEEE};
        for (const std::uint16_t version : {std::uint16_t{1}, std::uint16_t{2}}) {
            const std::size_t begin = (version == 2 ? 40 : 32) + fixedSize;
            body.extDataOffset = test.offset == noOffset
                                     ? std::uint8_t{0}
                                     : static_cast<std::uint8_t>(static_cast<int>(begin) + test.offset);
            Object out;
            out.data.fill(0xEE);
            ASSERT_TRUE(BlfOnDisk(body, {.version = version}).decode(out));
            EXPECT_EQ(out.storedBytes, test.expectedStored);
            for (std::size_t index = test.expectedStored; index < 64; ++index)
                ASSERT_EQ(out.data[index], 0) << index;
            for (std::size_t index = 0; index < std::min(test.expectedStored, test.stored); ++index)
                ASSERT_EQ(out.data[index], index + 1) << index;
        }
    }
};

TEST_P(BlfFdData, OfAMessageEndAtItsExtension)
{
    check<BLF::CanFdMessage64, CanFdMessage64Body>(40);
}

TEST_P(BlfFdData, OfAnErrorFrameEndAtItsExtension)
{
    check<BLF::CanFdErrorFrame64, CanFdErrorFrame64Body>(44);
}

INSTANTIATE_TEST_SUITE_P(Blf, BlfFdData,
                         testing::Values(ExtensionCase{"NoneAndAllStored", 64, 64, false, noOffset, 64},
                                         ExtensionCase{"ZerosAtTheEndAreNotStored", 48, 64, false, noOffset, 48},
                                         ExtensionCase{"NoDataAtAll", 0, 64, false, noOffset, 0},
                                         ExtensionCase{"MoreThanAFrameHolds", 80, 64, false, noOffset, 64},
                                         ExtensionCase{"BehindTheData", 8, 8, true, 8, 8},
                                         ExtensionCase{"BehindDataOfWhichZerosAreNotStored", 8, 64, true, 8, 8},
                                         ExtensionCase{"LastZerosLeftOutBeforeIt", 56, 64, true, 56, 56},
                                         ExtensionCase{"LastZeroLeftOutBeforeIt", 63, 64, true, 63, 63},
                                         ExtensionCase{"EightBytesBeforeTheEnd", 64, 64, false, 56, 56},
                                         ExtensionCase{"NineBytesBeforeTheEnd", 64, 64, false, 55, 64},
                                         ExtensionCase{"InsideDataThatAreAllThere", 64, 64, true, 8, 64},
                                         ExtensionCase{"BeyondTheEnd", 64, 64, false, 150, 64},
                                         ExtensionCase{"TooNearTheEnd", 12, 12, false, 8, 12},
                                         ExtensionCase{"WhereTheDataBegin", 16, 16, false, 0, 16},
                                         ExtensionCase{"InsideTheFixedFields", 16, 0, false, -4, 16}),
                         [](const auto &test) { return std::string(test.param.name); });

// Which makes the size of the whole object a multiple of 8.
TEST(BlfFdObjects, OnlyTheExtensionOfAnErrorFrameHasAFillerBehindIt)
{
    constexpr std::size_t stored = 64; // of which the last 12 are the extension and its filler, or data
    const BlfBytes data = countingBytes(stored);
    BLF::CanFdMessage64 message;
    ASSERT_TRUE(BlfOnDisk(CanFdMessage64Body{.validDataBytes = stored, .data = data, .extDataOffset = 72 + 52})
                    .decode(message));
    EXPECT_EQ(message.storedBytes, 64);
    BLF::CanFdErrorFrame64 error;
    ASSERT_TRUE(BlfOnDisk(CanFdErrorFrame64Body{.validDataBytes = stored, .data = data, .extDataOffset = 76 + 52})
                    .decode(error));
    EXPECT_EQ(error.storedBytes, 52);
}

} // namespace
