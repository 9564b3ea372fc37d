// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciProtocol.h"

#include "tests/vci/Hex.h"
#include "vci/TzVciByteOrder.h"
#include "vci/TzVciTypes.h"

#include <gtest/gtest.h>

#include <array>

using tztest::hexOf;

namespace {

struct RequestCase
{
    const char *name;
    TzVciProtocolData record;
    const char *wire;
};

class Request : public testing::TestWithParam<RequestCase>
{
};

} // namespace

TEST_P(Request, IsEncodedAsTheDeviceReadsIt)
{
    EXPECT_EQ(hexOf(encodeProtocolData(GetParam().record)), GetParam().wire);
}

INSTANTIATE_TEST_SUITE_P(
    Protocol, Request,
    testing::Values(
        RequestCase{"ReadFirmwareVersion", makeReadFirmwareVersion(), "AA 55 0F 60 00 00 01 00 01 00"},
        RequestCase{"ReadBaseTime", makeReadBaseTime(), "AA 55 0F 40 00 00 01 00 01 00"},
        RequestCase{"TerminalResistorOn", makeTerminalResistor(3, true), "AA 55 0F 30 03 00 01 00 01 00"},
        RequestCase{"TerminalResistorOff", makeTerminalResistor(0, false), "AA 55 0F 30 00 00 01 00 00 00"},
        RequestCase{"OpenCanChannel", makeOpenCanChannel(2, 500000), "AA 55 01 10 02 00 04 00 20 A1 07 00 00"},
        RequestCase{"OpenLinMaster", makeOpenLinChannel(1, 0, 19200), "AA 55 05 10 01 00 05 00 00 00 4B 00 00 00"},
        RequestCase{"OpenLinSlave", makeOpenLinChannel(0, 1, 0x12345678), "AA 55 05 10 00 00 05 00 01 78 56 34 12 00"},
        RequestCase{"CloseCanChannel", makeCloseChannel(TzVciProtocolId::can, 7), "AA 55 01 20 07 00 00 00 00"},
        RequestCase{"CloseLinChannel", makeCloseChannel(TzVciProtocolId::lin, 0), "AA 55 05 20 00 00 00 00 00"},
        RequestCase{"SetDataBitRate", makeSetCanParameter(1, TzVciCanParameter::dataBitRate, 2000000),
                    "AA 55 01 60 01 02 05 00 26 80 84 1E 00 00"},
        RequestCase{"ApplyParameters", makeApplyCanParameters(4), "AA 55 01 60 04 05 00 00 00"}),
    [](const auto &test) { return std::string(test.param.name); });

TEST(Protocol, DiscoveryAloneEndsWithFF)
{
    EXPECT_EQ(hexOf(encodeDiscoveryRequest()), "AA 55 00 FF 00 00 02 00 00 00 FF");
}

TEST(Protocol, PayloadIsCutAt122Bytes)
{
    const std::vector<std::uint8_t> longPayload(200, 0x5A);
    TzVciProtocolData record;
    setProtocolPayload(record, longPayload);
    EXPECT_EQ(record.length, 122);
    EXPECT_EQ(record.payload.back(), 0x5A);
    EXPECT_EQ(encodeProtocolData(record).size(), 131);
}

TEST(Protocol, AShorterPayloadLeavesNothingOfTheOneBefore)
{
    TzVciProtocolData record;
    setProtocolPayload(record, std::vector<std::uint8_t>(122, 0xFF));
    setProtocolPayload(record, std::vector<std::uint8_t>{1});
    EXPECT_EQ(record.length, 1);
    EXPECT_EQ(record.payload[0], 1);
    EXPECT_EQ(record.payload[1], 0);
    EXPECT_EQ(record.payload[121], 0);
}

TEST(Protocol, ARecordWithAHostileLengthIsEncodedWithWhatItHolds)
{
    TzVciProtocolData record;
    record.length = 0xFFFF;
    const QByteArray frame = encodeProtocolData(record);
    ASSERT_EQ(frame.size(), 131);
    EXPECT_EQ(hexOf(frame.left(8)), "AA 55 00 00 00 00 7A 00");
}

TEST(Protocol, ByteOrderIsLittleEndian)
{
    const auto bytes = tztest::bytesOf("01 02 03 04 05 06 07 88");
    EXPECT_EQ(TzVciByteOrder::load<std::uint16_t>(bytes.data()), 0x0201);
    EXPECT_EQ(TzVciByteOrder::load<std::uint32_t>(bytes.data() + 1), 0x05040302u);
    EXPECT_EQ(TzVciByteOrder::load<std::uint64_t>(bytes.data()), 0x8807060504030201u);
    std::array<std::uint8_t, 8> written{};
    TzVciByteOrder::store(written.data(), std::uint64_t{0x8807060504030201u});
    EXPECT_EQ(hexOf(written), "01 02 03 04 05 06 07 88");
}
