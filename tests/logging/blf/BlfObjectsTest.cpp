// SPDX-License-Identifier: GPL-3.0-or-later
// Single objects as they stand on the disk.
#include "tests/logging/blf/BlfOnDisk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

using namespace tztest;

namespace {

template <typename Range> std::string textOf(const Range &bytes)
{
    return {reinterpret_cast<const char *>(bytes.data()), bytes.size()};
}

TEST(BlfObjects, CanMessageHasEveryField)
{
    BLF::CanMessage out{.frameLength = 7, .bitCount = 7};
    ASSERT_TRUE(BlfOnDisk(CanMessageBody{0x1234, 0xA1, 8, 0x98DAF110, countingArray<8>()}).decode(out));
    EXPECT_EQ(out.channel, 0x1234);
    EXPECT_EQ(out.flags, 0xA1);
    EXPECT_EQ(out.dlc, 8);
    EXPECT_EQ(out.id, 0x98DAF110);
    EXPECT_EQ(out.data, countingArray<8>());
    EXPECT_EQ(out.frameLength, 0u);
    EXPECT_EQ(out.bitCount, 0);
}

TEST(BlfObjects, CanMessage2HasLengthAndBits)
{
    BLF::CanMessage out;
    ASSERT_TRUE(BlfOnDisk(CanMessage2Body{2, 1, 3, 0x123, countingArray<8>(), 268'000, 134}).decode(out));
    EXPECT_EQ(out.frameLength, 268'000u);
    EXPECT_EQ(out.bitCount, 134);
    EXPECT_EQ(out.data, countingArray<8>());
}

TEST(BlfObjects, WhatFollowsACanMessageOfTheFirstKindIsNoLength)
{
    BLF::CanMessage out;
    ASSERT_TRUE(
        BlfOnDisk(CanMessageBody::type, bodyBytes(CanMessage2Body{.frameLength = 5, .bitCount = 6})).decode(out));
    EXPECT_EQ(out.frameLength, 0u);
    EXPECT_EQ(out.bitCount, 0);
}

TEST(BlfObjects, CanMessage2WithHalfATrailerHasNoLength)
{
    BlfBytes body = bodyBytes(CanMessage2Body{.frameLength = 5, .bitCount = 6});
    body.resize(23);
    BLF::CanMessage out;
    ASSERT_TRUE(BlfOnDisk(CanMessage2Body::type, body).decode(out));
    EXPECT_EQ(out.frameLength, 0u);
    EXPECT_EQ(out.bitCount, 0);
}

TEST(BlfObjects, EventsOfAChannelHaveTheirChannels)
{
    BLF::CanErrorFrame error;
    ASSERT_TRUE(BlfOnDisk(CanErrorFrameBody{0x0203, 6, 9}).decode(error));
    EXPECT_EQ(error.channel, 0x0203);
    BLF::Overrun overrun;
    ASSERT_TRUE(BlfOnDisk(OverrunBody{5, 0x0304}).decode(overrun));
    EXPECT_EQ(overrun.busType, 5u);
    EXPECT_EQ(overrun.channel, 0x0304);
    BLF::CanDriverError driver;
    ASSERT_TRUE(BlfOnDisk(CanDriverErrorBody{0x0405, 96, 128, 0x68}).decode(driver));
    EXPECT_EQ(driver.channel, 0x0405);
    EXPECT_EQ(driver.txErrors, 96);
    EXPECT_EQ(driver.rxErrors, 128);
    EXPECT_EQ(driver.errorCode, 0x68u);
}

TEST(BlfObjects, CanStatisticHasEveryField)
{
    BLF::CanStatistic out;
    ASSERT_TRUE(BlfOnDisk(CanStatisticBody{3, 361, 1, 2, 3, 4, 5, 6, 508}).decode(out));
    EXPECT_EQ(out.channel, 3);
    EXPECT_EQ(out.busLoad, 361);
    EXPECT_EQ(out.standardDataFrames, 1u);
    EXPECT_EQ(out.extendedDataFrames, 2u);
    EXPECT_EQ(out.standardRemoteFrames, 3u);
    EXPECT_EQ(out.extendedRemoteFrames, 4u);
    EXPECT_EQ(out.errorFrames, 5u);
    EXPECT_EQ(out.overloadFrames, 6u);
}

TEST(BlfObjects, SystemVariableHasNameAndValue)
{
    const BlfOnDisk object(SystemVariableBody{.valueType = 2, .name = "::Bench::Mode", .value = blfValue(-7)});
    BLF::SystemVariable out;
    ASSERT_TRUE(object.decode(out));
    EXPECT_EQ(out.type, 2u);
    EXPECT_EQ(out.name, "::Bench::Mode");
    EXPECT_EQ(textOf(out.value), "\xF9\xFF\xFF\xFF");
}

TEST(BlfObjects, SystemVariableMayBeEmpty)
{
    const BlfOnDisk object(SystemVariableBody{.valueType = 3});
    BLF::SystemVariable out;
    ASSERT_TRUE(object.decode(out));
    EXPECT_EQ(out.name, "");
    EXPECT_TRUE(out.value.empty());
}

struct LengthCase
{
    std::uint32_t name;
    std::uint32_t value;
};

TEST(BlfObjects, SystemVariableWithLengthsBeyondItsEndIsRefused)
{
    constexpr std::uint32_t most = 0xFFFFFFFF;
    for (const LengthCase &lengths :
         {LengthCase{5, 4}, LengthCase{4, 5}, LengthCase{most, 0}, LengthCase{0, most}, LengthCase{most, 9},
          LengthCase{most, most}, LengthCase{0x80000000, 0x80000000}}) {
        const BlfOnDisk object(SystemVariableBody{.name = "name",
                                                  .value = blfValue(std::int32_t{1}),
                                                  .nameLength = lengths.name,
                                                  .valueLength = lengths.value});
        BLF::SystemVariable out;
        EXPECT_FALSE(object.decode(out)) << lengths.name << ' ' << lengths.value;
    }
}

TEST(BlfObjects, CanErrorFrameExtHasEveryField)
{
    BLF::CanErrorFrameExt out;
    ASSERT_TRUE(BlfOnDisk(CanErrorFrameExtBody{2, 6, 0xFFFE, 0xA2, 17, 0xF8, 0, 9000, 0xFFFFFFFF, 0x20A2, 0,
                                               countingArray<8>()})
                    .decode(out));
    EXPECT_EQ(out.channel, 2);
    EXPECT_EQ(out.flags, 0xFFFEu);
    EXPECT_EQ(out.ecc, 0xA2);
    EXPECT_EQ(out.position, 17);
    EXPECT_EQ(out.dlc, 0xF8);
    EXPECT_EQ(out.frameLength, 9000u);
    EXPECT_EQ(out.id, 0xFFFFFFFF);
    EXPECT_EQ(out.flagsExt, 0x20A2);
    EXPECT_EQ(out.data, countingArray<8>());
}

TEST(BlfObjects, CanErrorFrameExtTakesTheDataThatAreThere)
{
    BlfBytes body = bodyBytes(CanErrorFrameExtBody{.data = countingArray<8>()});
    body.resize(24 + 3);
    BLF::CanErrorFrameExt out;
    out.data.fill(0xEE);
    ASSERT_TRUE(BlfOnDisk(CanErrorFrameExtBody::type, body).decode(out));
    EXPECT_THAT(out.data, testing::ElementsAre(1, 2, 3, 0, 0, 0, 0, 0));
}

TEST(BlfObjects, CanSettingChangedStandsAlignedOrPacked)
{
    for (const bool packed : {false, true}) {
        BLF::CanSettingChanged out;
        ASSERT_TRUE(BlfOnDisk(CanSettingChangedBody{0x0203, 1, 0x20011736, 0x2000091C, packed}).decode(out));
        EXPECT_EQ(out.channel, 0x0203);
        EXPECT_EQ(out.changedType, 1);
        EXPECT_EQ(out.btrExtArb, 0x20011736u);
        EXPECT_EQ(out.btrExtData, 0x2000091Cu);
    }
}

TEST(BlfObjects, CanSettingChangedWithoutTheWordsHasNone)
{
    for (std::size_t size = 3; size <= 10; ++size) {
        BlfBytes body = bodyBytes(CanSettingChangedBody{2, 255, 0x01020304, 0x05060708, true});
        body.resize(size);
        BLF::CanSettingChanged out{.btrExtArb = 1, .btrExtData = 1};
        ASSERT_TRUE(BlfOnDisk(CanSettingChangedBody::type, body).decode(out));
        EXPECT_EQ(out.changedType, 255);
        EXPECT_EQ(out.btrExtArb, 0u);
        EXPECT_EQ(out.btrExtData, 0u);
    }
}

// Of every length up to that of a whole object and beyond.
template <typename Object, typename Body> void expectLeastBody(std::size_t least)
{
    for (const std::uint16_t version : {std::uint16_t{1}, std::uint16_t{2}}) {
        for (std::size_t size = 0; size <= 180; ++size) {
            BlfBytes bytes = bodyBytes(Body{});
            bytes.resize(size);
            Object out;
            EXPECT_EQ(BlfOnDisk(Body::type, bytes, {.version = version}).decode(out), size >= least)
                << "type " << Body::type << " with " << size << " bytes";
        }
    }
}

TEST(BlfObjects, BodiesShorterThanTheirFixedFieldsAreRefused)
{
    expectLeastBody<BLF::CanMessage, CanMessageBody>(16);
    expectLeastBody<BLF::CanMessage, CanMessage2Body>(16);
    expectLeastBody<BLF::CanErrorFrame, CanErrorFrameBody>(4);
    expectLeastBody<BLF::CanStatistic, CanStatisticBody>(28);
    expectLeastBody<BLF::CanDriverError, CanDriverErrorBody>(8);
    expectLeastBody<BLF::SystemVariable, SystemVariableBody>(32);
    expectLeastBody<BLF::CanErrorFrameExt, CanErrorFrameExtBody>(24);
    expectLeastBody<BLF::Overrun, OverrunBody>(6);
    expectLeastBody<BLF::CanFdMessage, CanFdMessageBody>(20);
    expectLeastBody<BLF::CanFdMessage64, CanFdMessage64Body>(40);
    expectLeastBody<BLF::CanFdErrorFrame64, CanFdErrorFrame64Body>(44);
    expectLeastBody<BLF::CanSettingChanged, CanSettingChangedBody>(3);
}

TEST(BlfObjects, NothingIsReadFromNothing)
{
    BLF::CanMessage out;
    EXPECT_FALSE(BLF::decode({}, out));
    const std::array<std::byte, 20> shorterThanItsHeader{};
    EXPECT_FALSE(BLF::decode({shorterThanItsHeader, 32}, out));
}

} // namespace
