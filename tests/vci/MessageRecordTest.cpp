// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciMessage.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>

TEST(MessageRecord, CanFieldsLieWhereTheWireHasThem)
{
    EXPECT_EQ(offsetof(TzVciCanDataType, canId), 0u);
    EXPECT_EQ(offsetof(TzVciCanDataType, dataLength), 4u);
    EXPECT_EQ(offsetof(TzVciCanDataType, flags), 5u);
    EXPECT_EQ(offsetof(TzVciCanDataType, reserved), 6u);
    EXPECT_EQ(offsetof(TzVciCanDataType, frameType), 7u);
    EXPECT_EQ(offsetof(TzVciCanDataType, timestampLow), 8u);
    EXPECT_EQ(offsetof(TzVciCanDataType, timestampHigh), 12u);
    EXPECT_EQ(offsetof(TzVciCanDataType, data), 16u);
}

TEST(MessageRecord, LinFieldsLieWhereTheWireHasThem)
{
    EXPECT_EQ(offsetof(TzVciLinDataType, linId), 0u);
    EXPECT_EQ(offsetof(TzVciLinDataType, dataLength), 1u);
    EXPECT_EQ(offsetof(TzVciLinDataType, checksumType), 2u);
    EXPECT_EQ(offsetof(TzVciLinDataType, linAction), 3u);
    EXPECT_EQ(offsetof(TzVciLinDataType, protectedId), 4u);
    EXPECT_EQ(offsetof(TzVciLinDataType, checksum), 5u);
    EXPECT_EQ(offsetof(TzVciLinDataType, linDirection), 6u);
    EXPECT_EQ(offsetof(TzVciLinDataType, reserved), 7u);
    EXPECT_EQ(offsetof(TzVciLinDataType, timestampLow), 8u);
    EXPECT_EQ(offsetof(TzVciLinDataType, timestampHigh), 12u);
    EXPECT_EQ(offsetof(TzVciLinDataType, data), 16u);
}

TEST(MessageRecord, EverySetterTouchesItsOwnFlagsAlone)
{
    TzVciCanDataType frame;
    frame.flags = 0xFF;
    frame.setExtendedId(false);
    EXPECT_EQ(frame.flags, 0xFE);
    frame.setRemote(false);
    EXPECT_EQ(frame.flags, 0xFC);
    frame.setFormat(0);
    EXPECT_EQ(frame.flags, 0xB4);
    frame.setFormat(TzVciCanFlag::fd);
    EXPECT_EQ(frame.flags, 0xF4);
    frame.setFormat(TzVciCanFlag::fd | TzVciCanFlag::bitRateSwitch);
    EXPECT_EQ(frame.flags, 0xFC);
    frame.flags = 0;
    frame.setFormat(0xFF);
    EXPECT_EQ(frame.flags, 0x48);
    frame.setExtendedId(true);
    frame.setRemote(true);
    EXPECT_EQ(frame.flags, 0x4B);
}

TEST(MessageRecord, PayloadLengthStopsAtWhatTheRecordHolds)
{
    TzVciCanDataType can;
    TzVciLinDataType lin;
    can.dataLength = 64;
    lin.dataLength = 8;
    EXPECT_EQ(can.payloadLength(), 64);
    EXPECT_EQ(lin.payloadLength(), 8);
    can.dataLength = 255;
    lin.dataLength = 9;
    EXPECT_EQ(can.payloadLength(), 64);
    EXPECT_EQ(lin.payloadLength(), 8);
}

TEST(MessageRecord, ALinFrameInAMessageIsFollowedByZeroes)
{
    TzVciMessage message;
    message.frame.can.data.fill(0xEE); // nothing of it may stay
    TzVciLinDataType lin;
    lin.linId = 0x3F;
    lin.data.fill(0xFF);
    message.setLin(lin);
    EXPECT_EQ(message.frame.lin.linId, 0x3F);
    EXPECT_EQ(message.frame.lin.data, lin.data);
    std::array<std::uint8_t, sizeof(message.frame)> bytes{};
    std::memcpy(bytes.data(), &message.frame, bytes.size());
    EXPECT_EQ(bytes[0], 0x3F);
    for (std::size_t i = sizeof(TzVciLinDataType); i < bytes.size(); ++i)
        EXPECT_EQ(bytes[i], 0) << i;
}
