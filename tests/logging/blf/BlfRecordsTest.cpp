// SPDX-License-Identifier: GPL-3.0-or-later
// What each kind of object becomes: all fields but the descriptions' texts.
#include "logging/blf/BlfRecords.h"

#include "tests/logging/blf/BlfObjectValues.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

using namespace BLF;
using namespace tztest;

namespace {

CanMessage fullMessage()
{
    return {.channel = 300,
            .flags = 0,
            .dlc = 8,
            .id = 0x123,
            .data = {1, 2, 3, 4, 5, 6, 7, 8},
            .frameLength = 239'972,
            .bitCount = 124};
}

TEST(BlfRecords, TimeIsTheNanosecondsAsSeconds)
{
    const CanErrorFrame object;
    EXPECT_EQ(makeRecord(header(2, 0), object).time, 0.0);
    EXPECT_EQ(makeRecord(header(2, 1), object).time, 1e-9);
    EXPECT_EQ(makeRecord(header(2, 1'500'000'000), object).time, 1.5);
}

TEST(BlfRecords, TimeStampWithTheHighBitSetIsALargePositiveNumber)
{
    const CanErrorFrame object;
    EXPECT_EQ(makeRecord(header(2, 0x8000'0000'0000'0000), object).time, 9223372036854775808.0 * 1e-9);
    EXPECT_EQ(makeRecord(header(2, std::numeric_limits<std::uint64_t>::max()), object).time,
              18446744073709551615.0 * 1e-9);
}

TEST(BlfRecords, CanMessage)
{
    const BlfFrame record = makeRecord(header(ObjectType::canMessage2), fullMessage());
    EXPECT_EQ(record.channel, 300U);
    EXPECT_EQ(record.id, 0x123U);
    EXPECT_EQ(record.dlc, 8);
    EXPECT_EQ(record.data, counting(8));
    EXPECT_EQ(record.frameType, FrameType::data);
    EXPECT_EQ(record.dir, QStringLiteral("Rx"));
    EXPECT_EQ(record.frameLength, 239'972U);
    EXPECT_EQ(record.bitCount, 124);
    EXPECT_EQ(record.arbBitCount, 0);
    EXPECT_TRUE(record.description.isEmpty());
    EXPECT_FALSE(record.isExtended || record.isFd || record.isBrs || record.isEsi || record.isRtr || record.isWakeUp ||
                 record.isNerr);
}

TEST(BlfRecords, IdLosesNothingButTheExtendedBit)
{
    CanMessage object = fullMessage();
    object.id = 0x98DA'F110;
    BlfFrame record = makeRecord(header(ObjectType::canMessage), object);
    EXPECT_EQ(record.id, 0x18DA'F110U);
    EXPECT_TRUE(record.isExtended);

    object.id = 0x7FFF'FFFF;
    record = makeRecord(header(ObjectType::canMessage), object);
    EXPECT_EQ(record.id, 0x7FFF'FFFFU);
    EXPECT_FALSE(record.isExtended);
}

TEST(BlfRecords, EachOfTheLowFourFlagBitsMeansSent)
{
    for (const std::uint8_t flags : {0x01, 0x02, 0x04, 0x08, 0x0F}) {
        CanMessage object = fullMessage();
        object.flags = flags;
        EXPECT_EQ(makeRecord(header(ObjectType::canMessage2), object).dir, QStringLiteral("Tx")) << int{flags};
    }
    for (const std::uint8_t flags : {0x00, 0x10, 0xF0}) {
        CanMessage object = fullMessage();
        object.flags = flags;
        EXPECT_EQ(makeRecord(header(ObjectType::canMessage2), object).dir, QStringLiteral("Rx")) << int{flags};
    }
}

TEST(BlfRecords, UpperFlagBitsAreNerrWakeUpAndRemote)
{
    const auto recordWith = [](std::uint8_t flags) {
        CanMessage object = fullMessage();
        object.flags = flags;
        return makeRecord(header(ObjectType::canMessage), object);
    };
    const BlfFrame nerr = recordWith(0x20);
    EXPECT_TRUE(nerr.isNerr && !nerr.isWakeUp && !nerr.isRtr);
    const BlfFrame wakeUp = recordWith(0x40);
    EXPECT_TRUE(!wakeUp.isNerr && wakeUp.isWakeUp && !wakeUp.isRtr);
    const BlfFrame remote = recordWith(0x80);
    EXPECT_TRUE(!remote.isNerr && !remote.isWakeUp && remote.isRtr);
    EXPECT_EQ(remote.frameType, FrameType::remote);
    EXPECT_EQ(recordWith(0x10).frameType, FrameType::data);
}

TEST(BlfRecords, RemoteFrameKeepsItsDlcAndHasNoData)
{
    CanMessage object = fullMessage();
    object.flags = 0x80;
    const BlfFrame record = makeRecord(header(ObjectType::canMessage), object);
    EXPECT_EQ(record.dlc, 8);
    EXPECT_TRUE(record.data.isEmpty());
}

TEST(BlfRecords, ClassicDataIsAtMostEightBytesWhateverTheDlcSays)
{
    CanMessage object = fullMessage();
    for (const int dlc : {0, 1, 7, 8, 9, 15, 0x33, 255}) {
        object.dlc = static_cast<std::uint8_t>(dlc);
        const BlfFrame record = makeRecord(header(ObjectType::canMessage), object);
        EXPECT_EQ(record.dlc, dlc);
        EXPECT_EQ(record.data, counting(std::min(dlc, 8))) << dlc;
    }
}

TEST(BlfRecords, CanErrorFrame)
{
    const BlfFrame record = makeRecord(header(2), CanErrorFrame{.channel = 4});
    EXPECT_EQ(record.frameType, FrameType::error);
    EXPECT_EQ(record.channel, 4U);
    EXPECT_EQ(record.dir, QStringLiteral("Rx"));
    EXPECT_EQ(record.description, QStringLiteral("ErrorFrame"));
}

TEST(BlfRecords, CanStatisticAndDriverErrorHaveTheirChannels)
{
    const BlfFrame statistic = makeRecord(header(4), CanStatistic{.channel = 2});
    EXPECT_EQ(statistic.frameType, FrameType::statistic);
    EXPECT_EQ(statistic.channel, 2U);
    EXPECT_TRUE(statistic.dir.isEmpty());
    const BlfFrame driverError = makeRecord(header(31), CanDriverError{.channel = 3});
    EXPECT_EQ(driverError.frameType, FrameType::driverError);
    EXPECT_EQ(driverError.channel, 3U);
    EXPECT_TRUE(driverError.dir.isEmpty());
}

TEST(BlfRecords, SystemVariableIsOnChannelZero)
{
    const BlfFrame record = makeRecord(header(72), SystemVariable{.type = 2, .name = "a", .value = {}});
    EXPECT_EQ(record.frameType, FrameType::systemVariable);
    EXPECT_EQ(record.channel, 0U);
}

TEST(BlfRecords, Overrun)
{
    const BlfFrame record = makeRecord(header(91), Overrun{.busType = 1, .channel = 7});
    EXPECT_EQ(record.frameType, FrameType::overload);
    EXPECT_EQ(record.channel, 7U);
    EXPECT_EQ(record.description, QStringLiteral("Reception overrun - messages are lost"));
}

TEST(BlfRecords, ExtendedErrorFrameHasWhatIsKnownOfTheBrokenFrame)
{
    const CanErrorFrameExt object{
        .channel = 5, .dlc = 0xF3, .frameLength = 77, .id = 0x8000'0012, .data = {1, 2, 3, 4, 5, 6, 7, 8}};
    const BlfFrame record = makeRecord(header(73), object);
    EXPECT_EQ(record.frameType, FrameType::error);
    EXPECT_EQ(record.channel, 5U);
    EXPECT_EQ(record.id, 0x12U);
    EXPECT_TRUE(record.isExtended);
    EXPECT_EQ(record.dlc, 3);
    EXPECT_EQ(record.data, counting(3));
    EXPECT_EQ(record.frameLength, 77U);
    EXPECT_FALSE(record.isFd);
}

struct ErrorDirection
{
    std::uint32_t flags;
    std::uint16_t flagsExt;
    const char *dir;
};

TEST(BlfRecords, DirectionOfAnExtendedErrorFrameIsInTheFieldThatItsFlagsName)
{
    const std::vector<ErrorDirection> cases{
        {0x0, 0x0000, "Rx"},    // no field is valid
        {0x0, 0x1000, "Rx"},    //
        {0x1, 0x0000, "Tx"},    // the older code: bit 5 clear
        {0x1, 0x0020, "Rx"},    //
        {0x1, 0x1020, "Rx"},    // bit 12 is of the other code
        {0x2, 0x0000, "Rx"},    // the core's code: bit 12
        {0x2, 0x1000, "Tx"},    //
        {0x2, 0x1020, "Tx"},    // bit 5 is of the other code
        {0x3, 0x0000, "Rx"},    // where both are valid the core's
        {0x3, 0x1020, "Tx"},    //
        {0xFFFE, 0x207B, "Rx"}, // as recorded
        {0xFFFE, 0x307B, "Tx"}, {0xFFFC, 0x1000, "Rx"},
    };
    for (const ErrorDirection &c : cases) {
        const CanErrorFrameExt object{.flags = c.flags, .flagsExt = c.flagsExt};
        EXPECT_EQ(makeRecord(header(73), object).dir.toStdString(), c.dir) << c.flags << ' ' << c.flagsExt;
    }
}

TEST(BlfRecords, OnlyABitTimingChangeSetsTheBitRates)
{
    CanSettingChanged object{.channel = 6, .changedType = 1, .btrExtArb = 0x2001'1736, .btrExtData = 0x2000'091C};
    BlfFrame record = makeRecord(header(129), object);
    EXPECT_EQ(record.frameType, FrameType::setting);
    EXPECT_EQ(record.channel, 6U);
    EXPECT_EQ(record.arbBitrate, 0x2001'1736U);
    EXPECT_EQ(record.dataBitrate, 0x2000'091CU);

    for (const int type : {0, 2, 255}) {
        object.changedType = static_cast<std::uint8_t>(type);
        record = makeRecord(header(129), object);
        EXPECT_EQ(record.description, QStringLiteral("CAN reseted")) << type;
        EXPECT_EQ(record.arbBitrate, 0U);
        EXPECT_EQ(record.dataBitrate, 0U);
    }
}

} // namespace
