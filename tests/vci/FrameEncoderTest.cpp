// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciFrameEncoder.h"

#include "tests/vci/Hex.h"

#include <gtest/gtest.h>

using tztest::hexOf;

namespace {

TzVciCanDataType canFrame(std::uint8_t dataLength)
{
    TzVciCanDataType frame;
    frame.canId = 0x18DA10F1;
    frame.dataLength = dataLength;
    frame.flags = TzVciCanFlag::extendedId;
    frame.reserved = 0x77; // must not reach the wire
    frame.frameType = TzVciCanFrameType::transmitted;
    frame.timestampLow = 0x04030201;
    frame.timestampHigh = 0x08070605;
    for (std::size_t i = 0; i < frame.data.size(); ++i)
        frame.data[i] = static_cast<std::uint8_t>(i + 1);
    return frame;
}

} // namespace

TEST(FrameEncoder, CanFrameIsCutToItsData)
{
    EXPECT_EQ(hexOf(encodeCanFrame(2, canFrame(3))),
              "AA 55 01 30 02 00 13 00 F1 10 DA 18 03 01 00 01 01 02 03 04 05 06 07 08 01 02 03 00");
}

TEST(FrameEncoder, CanFrameWithoutDataHasSixteenBytesOfPayload)
{
    EXPECT_EQ(hexOf(encodeCanFrame(0, canFrame(0))),
              "AA 55 01 30 00 00 10 00 F1 10 DA 18 00 01 00 01 01 02 03 04 05 06 07 08 00");
}

TEST(FrameEncoder, CanFdFrameOf64BytesIsTheWholeRecord)
{
    const auto bytes = encodeCanFrame(0, canFrame(64));
    ASSERT_EQ(bytes.size(), 89u);
    EXPECT_EQ(bytes[6], 80);
    EXPECT_EQ(bytes[12], 64);
    EXPECT_EQ(bytes[87], 64);
    EXPECT_EQ(bytes[88], 0);
}

TEST(FrameEncoder, CanFrameThatClaimsMoreThan64BytesIsWrittenWith64)
{
    EXPECT_EQ(encodeCanFrame(0, canFrame(65)), encodeCanFrame(0, canFrame(64)));
    EXPECT_EQ(encodeCanFrame(0, canFrame(255)), encodeCanFrame(0, canFrame(64)));
}

TEST(FrameEncoder, LinFrameIsAlways24BytesOfPayload)
{
    TzVciLinDataType frame;
    frame.linId = 0x2A;
    frame.dataLength = 2;
    frame.checksumType = 1;
    frame.linAction = TzVciLinAction::responseOnly;
    frame.protectedId = 0x6A;
    frame.checksum = 0xC5;
    frame.linDirection = TzVciLinDirection::slaveWrite;
    frame.reserved = 0x77; // must not reach the wire
    frame.timestampLow = 0x04030201;
    frame.timestampHigh = 0x08070605;
    frame.data = {0x11, 0x22};
    EXPECT_EQ(hexOf(encodeLinFrame(1, frame)),
              "AA 55 05 30 01 00 18 00 2A 02 01 03 6A C5 11 00 01 02 03 04 05 06 07 08 "
              "11 22 00 00 00 00 00 00 00");
    frame.dataLength = 200;
    EXPECT_EQ(encodeLinFrame(1, frame)[9], 8);
}
