// SPDX-License-Identifier: GPL-3.0-or-later
// What the CAN FD objects become: their flags, lengths and times.
#include "logging/blf/BlfRecords.h"

#include "tests/logging/blf/BlfObjectValues.h"

#include <gtest/gtest.h>

#include <vector>

using namespace BLF;
using namespace tztest;

namespace {

CanFdMessage fdMessage()
{
    CanFdMessage object{.channel = 2,
                        .dlc = 15,
                        .id = 0x98DA'F110,
                        .frameLength = 300'000,
                        .arbBitCount = 29,
                        .canFdFlags = 1,
                        .validDataBytes = 64};
    fill(object, 64);
    return object;
}

TEST(BlfFdRecords, CanFdMessage)
{
    const BlfFrame record = makeRecord(header(100), fdMessage());
    EXPECT_TRUE(record.isFd && record.isExtended);
    EXPECT_FALSE(record.isBrs || record.isEsi || record.isRtr || record.isWakeUp || record.isNerr);
    EXPECT_EQ(record.channel, 2U);
    EXPECT_EQ(record.id, 0x18DA'F110U);
    EXPECT_EQ(record.dlc, 15);
    EXPECT_EQ(record.data, counting(64));
    EXPECT_EQ(record.dir, QStringLiteral("Rx"));
    EXPECT_EQ(record.frameLength, 300'000U);
    EXPECT_EQ(record.arbBitCount, 29);
    EXPECT_EQ(record.bitCount, 0);
}

TEST(BlfFdRecords, CanFdMessageHasTheFlagsOfACanMessageAndItsOwn)
{
    CanFdMessage object = fdMessage();
    object.flags = 0x61;
    object.canFdFlags = 0x02;
    BlfFrame record = makeRecord(header(100), object);
    EXPECT_TRUE(record.isBrs && !record.isEsi && record.isWakeUp && record.isNerr && !record.isRtr);
    EXPECT_EQ(record.dir, QStringLiteral("Tx"));
    EXPECT_TRUE(record.isFd) << "also without the flag of the format";

    object.flags = 0x80;
    object.canFdFlags = 0x05;
    record = makeRecord(header(100), object);
    EXPECT_TRUE(!record.isBrs && record.isEsi && record.isRtr);
    EXPECT_EQ(record.frameType, FrameType::remote);
    EXPECT_TRUE(record.data.isEmpty());
}

struct LengthCase
{
    int dlc;
    int valid;
    int stored;
    bool isFdFormat;
    QByteArray data;
};

TEST(BlfFdRecords, LengthOfACanFdMessageIsTheValidBytesElseTheDlcButNeverMoreThanStored)
{
    const std::vector<LengthCase> cases{
        {15, 64, 64, true, counting(64)},
        {15, 3, 64, true, counting(3)},
        {2, 5, 64, true, counting(5)},
        {15, 64, 20, true, counting(20)},
        {15, 255, 64, true, counting(64)},
        {0, 0, 64, true, {}},
        {8, 0, 64, true, counting(8)},
        {9, 0, 64, true, counting(12)},
        {10, 0, 64, true, counting(16)},
        {11, 0, 64, true, counting(20)},
        {12, 0, 64, true, counting(24)},
        {13, 0, 64, true, counting(32)},
        {14, 0, 64, true, counting(48)},
        {15, 0, 64, true, counting(64)},
        {15, 0, 10, true, counting(10)},
        {0x1A, 0, 64, true, counting(16)},
        {15, 0, 64, false, counting(8)},
        {5, 0, 64, false, counting(5)},
        {15, 0, 0, true, {}},
    };
    for (const LengthCase &c : cases) {
        CanFdMessage object{.dlc = static_cast<std::uint8_t>(c.dlc),
                            .canFdFlags = static_cast<std::uint8_t>(c.isFdFormat ? 1 : 0),
                            .validDataBytes = static_cast<std::uint8_t>(c.valid)};
        fill(object, static_cast<std::uint8_t>(c.stored));
        const BlfFrame record = makeRecord(header(100), object);
        EXPECT_EQ(record.data, c.data) << c.dlc << ' ' << c.valid << ' ' << c.stored;
        EXPECT_EQ(record.dlc, c.dlc);
    }
}

TEST(BlfFdRecords, LengthOfACanFdMessage64IsTheValidBytesWithZeroesForWhatIsNotStored)
{
    const std::vector<LengthCase> cases{
        {15, 64, 64, true, counting(64)},  {15, 64, 48, true, zeroFilled(48, 64)}, {15, 3, 64, true, counting(3)},
        {15, 255, 64, true, counting(64)}, {9, 12, 0, true, zeroFilled(0, 12)},    {0, 0, 64, true, {}},
        {9, 0, 64, true, counting(12)},    {15, 0, 48, true, counting(48)},        {15, 0, 64, false, counting(8)},
    };
    for (const LengthCase &c : cases) {
        CanFdMessage64 object{.dlc = static_cast<std::uint8_t>(c.dlc),
                              .validDataBytes = static_cast<std::uint8_t>(c.valid),
                              .flags = c.isFdFormat ? 0x1000U : 0U};
        fill(object, static_cast<std::uint8_t>(c.stored));
        EXPECT_EQ(makeRecord(header(101), object).data, c.data) << c.dlc << ' ' << c.valid << ' ' << c.stored;

        CanFdErrorFrame64 error{.dlc = object.dlc,
                                .validDataBytes = object.validDataBytes,
                                .extFlags = static_cast<std::uint16_t>(c.isFdFormat ? 1 : 0)};
        fill(error, static_cast<std::uint8_t>(c.stored));
        EXPECT_EQ(makeRecord(header(104), error).data, c.data) << c.dlc << ' ' << c.valid << ' ' << c.stored;
    }
}

CanFdMessage64 fdMessage64()
{
    CanFdMessage64 object{.channel = 255,
                          .dlc = 8,
                          .validDataBytes = 8,
                          .id = 0x7FF,
                          .frameLength = 1,
                          .flags = 0x1000,
                          .btrCfgArb = 0x4650'0250,
                          .btrCfgData = 0x4B28'0150,
                          .timeOffsetBrsNs = 2,
                          .timeOffsetCrcDelNs = 3,
                          .bitCount = 65'535,
                          .dir = 0,
                          .crc = 0x8000'4645};
    fill(object, 8);
    return object;
}

TEST(BlfFdRecords, CanFdMessage64)
{
    const BlfFrame record = makeRecord(header(101), fdMessage64());
    EXPECT_TRUE(record.isFd);
    EXPECT_FALSE(record.isExtended || record.isBrs || record.isEsi || record.isRtr || record.isWakeUp || record.isNerr);
    EXPECT_EQ(record.frameType, FrameType::data);
    EXPECT_EQ(record.channel, 255U);
    EXPECT_EQ(record.id, 0x7FFU);
    EXPECT_EQ(record.data, counting(8));
    EXPECT_EQ(record.frameLength, 1U);
    EXPECT_EQ(record.arbBitrate, 0x4650'0250U);
    EXPECT_EQ(record.dataBitrate, 0x4B28'0150U);
    EXPECT_EQ(record.brsOffset, 2U);
    EXPECT_EQ(record.crcDelOffset, 3U);
    EXPECT_EQ(record.bitCount, 65'535);
    EXPECT_EQ(record.arbBitCount, 0);
    EXPECT_EQ(record.crc, 0x8000'4645U);
}

TEST(BlfFdRecords, CanFdMessage64HasFlagsOfItsOwn)
{
    const auto recordWith = [](std::uint32_t flags) {
        CanFdMessage64 object = fdMessage64();
        object.flags = flags;
        return makeRecord(header(101), object);
    };
    EXPECT_TRUE(recordWith(0x0004).isNerr);
    EXPECT_TRUE(recordWith(0x0008).isWakeUp);
    EXPECT_TRUE(recordWith(0x2000).isBrs);
    EXPECT_TRUE(recordWith(0x4000).isEsi);
    const BlfFrame remote = recordWith(0x0080);
    EXPECT_TRUE(remote.isRtr);
    EXPECT_EQ(remote.frameType, FrameType::remote);
    EXPECT_TRUE(remote.data.isEmpty());
    EXPECT_TRUE(remote.isFd);

    const BlfFrame others = recordWith(~(0x0004U | 0x0008U | 0x0080U | 0x2000U | 0x4000U));
    EXPECT_FALSE(others.isBrs || others.isEsi || others.isRtr || others.isWakeUp || others.isNerr);
    EXPECT_EQ(others.dir, QStringLiteral("Rx"));
}

TEST(BlfFdRecords, CanFdMessage64TakesItsDirectionFromTheDirectionByte)
{
    for (const int dir : {0, 1, 2, 255}) {
        CanFdMessage64 object = fdMessage64();
        object.dir = static_cast<std::uint8_t>(dir);
        EXPECT_EQ(makeRecord(header(101), object).dir.toStdString(), dir == 0 ? "Rx" : "Tx") << dir;
    }
}

TEST(BlfFdRecords, CanFdErrorFrame64)
{
    CanFdErrorFrame64 object{.channel = 9,
                             .dlc = 4,
                             .validDataBytes = 4,
                             .flags = 0xFFDF,
                             .errorCodeExt = 0x20,
                             .extFlags = 0x06,
                             .id = 0x8000'0001};
    fill(object, 4);
    BlfFrame record = makeRecord(header(104), object);
    EXPECT_EQ(record.frameType, FrameType::fdError);
    EXPECT_EQ(record.channel, 9U);
    EXPECT_EQ(record.dir, QStringLiteral("Tx")) << "bit 5 of the flags is clear";
    EXPECT_EQ(record.id, 1U);
    EXPECT_EQ(record.data, counting(4));
    EXPECT_TRUE(record.isExtended && record.isBrs && record.isEsi);
    EXPECT_FALSE(record.isFd) << "only frames count as such";

    object.flags = 0x0020;
    object.errorCodeExt = 0;
    record = makeRecord(header(104), object);
    EXPECT_EQ(record.dir, QStringLiteral("Rx"));
}

} // namespace
