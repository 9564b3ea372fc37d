// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/tools/simulator/SimulatorFixture.h"

using namespace tzsimtest;
using tzsim::DeviceStatus::badLength;
using tzsim::DeviceStatus::badValue;
using tzsim::DeviceStatus::noSuchChannel;
using tzsim::DeviceStatus::notOpen;
using tzsim::DeviceStatus::ok;
using tzsim::DeviceStatus::unknownCommand;
using tzsim::DeviceStatus::unknownParameter;

namespace {

class SimulatorRequest : public OneBoxFixture<2, 2>
{
protected:
    Bytes exchange(std::string_view text)
    {
        EXPECT_TRUE(host->send(hex(text)));
        return host->receiveBytes();
    }
};

} // namespace

TEST_F(SimulatorRequest, FirmwareVersion)
{
    EXPECT_EQ(toHex(exchange("AA 55 0F 60 00 00 01 00 01 00")), "55 aa 0f 60 00 00 04 00 01 02 03 04 00");
}

TEST_F(SimulatorRequest, BaseTimeIsTheBoxesOwnMonotonicClock)
{
    box->setClockOffset(0x1122334455667788);
    const Bytes first = exchange("AA 55 0F 40 00 00 01 00 01 00");
    ASSERT_EQ(first.size(), 17U);
    EXPECT_EQ(toHex({first.begin(), first.begin() + 8}), "55 aa 0f 40 00 00 08 00");
    EXPECT_EQ(first.back(), 0);
    EXPECT_GE(u64(first, 8), 0x1122334455667788U);
    EXPECT_LT(u64(first, 8), 0x1122334455667788U + 10 * 10'000'000);
    const Bytes second = exchange("AA 55 0F 40 00 00 01 00 01 00");
    EXPECT_GT(u64(second, 8), u64(first, 8));
    EXPECT_GE(box->deviceTime(), u64(second, 8));
}

TEST_F(SimulatorRequest, OpenAndCloseCan)
{
    EXPECT_EQ(toHex(exchange("AA 55 01 10 01 00 04 00 20 A1 07 00 00")), "55 aa 01 10 01 00 01 00 00 00");
    EXPECT_EQ(box->canChannel(1), (tzsim::CanChannelState{.open = true, .nominalRate = 500'000}));
    EXPECT_FALSE(box->canChannel(0).open);
    EXPECT_EQ(toHex(exchange("AA 55 01 20 01 00 00 00 00")), "55 aa 01 20 01 00 01 00 00 00");
    EXPECT_EQ(box->canChannel(1), tzsim::CanChannelState());
}

TEST_F(SimulatorRequest, OpenAndCloseLin)
{
    EXPECT_EQ(toHex(exchange("AA 55 05 10 00 00 05 00 00 00 4B 00 00 00")), "55 aa 05 10 00 00 01 00 00 00");
    EXPECT_EQ(box->linChannel(0), (tzsim::LinChannelState{.open = true, .master = true, .rate = 19'200}));
    EXPECT_EQ(request(*host, 5, 0x10, 1, 0, hex("01 80 25 00 00")), Bytes{ok});
    EXPECT_EQ(box->linChannel(1), (tzsim::LinChannelState{.open = true, .master = false, .rate = 9600}));
    EXPECT_EQ(request(*host, 5, 0x20, 0, 0), Bytes{ok});
    EXPECT_FALSE(box->linChannel(0).open);
    EXPECT_EQ(box->openChannels(), 1);
}

TEST_F(SimulatorRequest, ParametersInTheirOrder)
{
    openCan(*host, 0);
    const std::vector<Bytes> values = {hex("01 20 A1 07 00"), hex("27 1F 00 00 00"), hex("28 08 00 00 00"),
                                       hex("26 80 84 1E 00"), hex("29 0F 00 00 00"), hex("2A 04 00 00 00")};
    for (const Bytes &value : values)
        EXPECT_EQ(request(*host, 1, 0x60, 0, 2, value), Bytes{ok});
    EXPECT_FALSE(box->canChannel(0).applied);
    EXPECT_EQ(request(*host, 0x0F, 0x30, 0, 0, {1}), Bytes{ok});
    EXPECT_EQ(request(*host, 1, 0x60, 0, 5), Bytes{ok});
    EXPECT_EQ(box->canChannel(0), (tzsim::CanChannelState{.open = true,
                                                          .nominalRate = 500'000,
                                                          .dataRate = 2'000'000,
                                                          .timing = {31, 8, 15, 4},
                                                          .applied = true,
                                                          .resistor = true}));
    std::vector<tzsim::Request> wanted = {{1, 0x10, 0, 0, hex("20 A1 07 00")}};
    for (const Bytes &value : values)
        wanted.push_back({1, 0x60, 0, 2, value});
    wanted.push_back({0x0F, 0x30, 0, 0, {1}});
    wanted.push_back({1, 0x60, 0, 5, {}});
    EXPECT_EQ(box->requests(), wanted);
    box->clearRequests();
    EXPECT_TRUE(box->requests().empty());
}

TEST_F(SimulatorRequest, ResistorSurvivesOpenAndClose)
{
    EXPECT_EQ(request(*host, 0x0F, 0x30, 1, 0, {1}), Bytes{ok});
    EXPECT_TRUE(box->canChannel(1).resistor);
    openCan(*host, 1);
    EXPECT_EQ(request(*host, 1, 0x20, 1, 0), Bytes{ok});
    EXPECT_TRUE(box->canChannel(1).resistor);
    EXPECT_EQ(request(*host, 0x0F, 0x30, 1, 0, {0}), Bytes{ok});
    EXPECT_FALSE(box->canChannel(1).resistor);
}

TEST_F(SimulatorRequest, OpeningAgainForgetsTheParameters)
{
    openCan(*host, 0);
    request(*host, 1, 0x60, 0, 2, hex("26 80 84 1E 00"));
    openCan(*host, 0, 250'000);
    EXPECT_EQ(box->canChannel(0), (tzsim::CanChannelState{.open = true, .nominalRate = 250'000}));
}

TEST_F(SimulatorRequest, SeveralRequestsInOneDatagramAreAllAnsweredInOrder)
{
    Bytes datagram = hostFrame(1, 0x10, 0, 0, hex("20 A1 07 00"));
    const Bytes second = hostFrame(0x0F, 0x60, 0, 0, {1});
    datagram.insert(datagram.end(), second.begin(), second.end());
    host->send(datagram);
    EXPECT_EQ(toHex(host->receiveBytes()), "55 aa 01 10 00 00 01 00 00 00");
    EXPECT_EQ(toHex(host->receiveBytes()), "55 aa 0f 60 00 00 04 00 01 02 03 04 00");
    EXPECT_EQ(box->counters().malformed, 0U);
}

TEST_F(SimulatorRequest, HeartbeatIsCountedAndNotAnswered)
{
    const auto before = std::chrono::steady_clock::now();
    host->send({0xFF});
    expectNothingWaits(*host);
    const auto counters = box->counters();
    EXPECT_EQ(counters.heartbeats, 1U);
    EXPECT_GE(counters.lastHeartbeat, before);
    EXPECT_EQ(counters.malformed, 0U);
    EXPECT_EQ(counters.datagramsIn, 2U);
    EXPECT_EQ(counters.bytesIn, 11U);
    EXPECT_EQ(counters.framesIn, 1U);
    EXPECT_EQ(counters.datagramsOut, 1U);
    EXPECT_EQ(counters.bytesOut, 13U);
}

TEST_F(SimulatorRequest, MalformedDatagramsAreCounted)
{
    for (const char *text : {"", "FF FF", "AA 55 0F", "55 AA 0F 60 00 00 01 00 01 00", "AA 55 0F 60 00 00 02 00 01 00"})
        host->send(hex(text));
    host->send(Bytes(5000, 0));
    expectNothingWaits(*host);
    EXPECT_EQ(box->counters().malformed, 6U);
    // A frame behind junk, and one with a placeholder that is not zero, are still answered.
    EXPECT_EQ(exchange("01 02 03 AA 55 0F 60 00 00 01 00 01 00").size(), 13U);
    EXPECT_EQ(exchange("AA 55 0F 60 00 00 01 00 01 07").size(), 13U);
    EXPECT_EQ(box->counters().malformed, 8U);
}

TEST_F(SimulatorRequest, ReplyGoesToWhoeverAsked)
{
    HostSocket other(hostAddress());
    other.connectTo(box->address(), 8000);
    EXPECT_EQ(request(*host, 0x0F, 0x60, 0, 0, {1}).size(), 4U);
    EXPECT_EQ(request(other, 0x0F, 0x60, 0, 0, {1}).size(), 4U);
    EXPECT_EQ(request(*host, 0x0F, 0x60, 0, 0, {1}).size(), 4U);
}

struct StatusCase
{
    const char *name;
    std::uint8_t protocol, command, channel, param;
    const char *payload;
    std::uint8_t status;
};

class SimulatorStatus : public SimulatorFixture, public testing::WithParamInterface<StatusCase>
{
};

TEST_P(SimulatorStatus, IsAnswered)
{
    tzsim::Box &box = addBox(0, 2, 2);
    start();
    const auto host = makeHost(box);
    openCan(*host, 1);
    const StatusCase &c = GetParam();
    EXPECT_EQ(toHex(request(*host, c.protocol, c.command, c.channel, c.param, hex(c.payload))), toHex({c.status}));
}

INSTANTIATE_TEST_SUITE_P(
    Simulator, SimulatorStatus,
    testing::Values(StatusCase{"OpenTooShort", 1, 0x10, 0, 0, "20 A1 07", badLength},
                    StatusCase{"OpenWithoutRate", 1, 0x10, 0, 0, "00 00 00 00", badValue},
                    StatusCase{"OpenChannelBeyondTheLast", 1, 0x10, 2, 0, "20 A1 07 00", noSuchChannel},
                    StatusCase{"OpenLinTooShort", 5, 0x10, 0, 0, "00 4B 00 00", badLength},
                    StatusCase{"OpenLinModeTwo", 5, 0x10, 0, 0, "02 00 4B 00 00", badValue},
                    StatusCase{"OpenLinWithoutRate", 5, 0x10, 0, 0, "00 00 00 00 00", badValue},
                    StatusCase{"OpenLinBeyondTheLast", 5, 0x10, 2, 0, "00 00 4B 00 00", noSuchChannel},
                    StatusCase{"CloseWithPayload", 1, 0x20, 1, 0, "00", badLength},
                    StatusCase{"CloseClosed", 1, 0x20, 0, 0, "", ok},
                    StatusCase{"CloseLinClosed", 5, 0x20, 0, 0, "", ok},
                    StatusCase{"CloseBeyondTheLast", 5, 0x20, 9, 0, "", noSuchChannel},
                    StatusCase{"ParameterOnClosed", 1, 0x60, 0, 2, "01 20 A1 07 00", notOpen},
                    StatusCase{"ParameterUnknown", 1, 0x60, 1, 2, "02 20 A1 07 00", unknownParameter},
                    StatusCase{"ParameterBelowTiming", 1, 0x60, 1, 2, "25 01 00 00 00", unknownParameter},
                    StatusCase{"ParameterAboveTiming", 1, 0x60, 1, 2, "2B 01 00 00 00", unknownParameter},
                    StatusCase{"ParameterTooShort", 1, 0x60, 1, 2, "01 20 A1 07", badLength},
                    StatusCase{"ParameterZero", 1, 0x60, 1, 2, "26 00 00 00 00", badValue},
                    StatusCase{"TimingTooLarge", 1, 0x60, 1, 2, "27 00 01 00 00", badValue},
                    StatusCase{"TimingLargest", 1, 0x60, 1, 2, "27 FF 00 00 00", ok},
                    StatusCase{"ParamByteUnknown", 1, 0x60, 1, 3, "01 20 A1 07 00", unknownCommand},
                    StatusCase{"ApplyOnClosed", 1, 0x60, 0, 5, "", notOpen},
                    StatusCase{"ApplyWithPayload", 1, 0x60, 1, 5, "00", badLength},
                    StatusCase{"ParameterOfLin", 5, 0x60, 0, 2, "01 20 A1 07 00", unknownCommand},
                    StatusCase{"ResistorTwo", 0x0F, 0x30, 0, 0, "02", badValue},
                    StatusCase{"ResistorTooLong", 0x0F, 0x30, 0, 0, "01 00", badLength},
                    StatusCase{"ResistorBeyondTheLast", 0x0F, 0x30, 2, 0, "01", noSuchChannel},
                    StatusCase{"VersionWrongPayload", 0x0F, 0x60, 0, 0, "02", badLength},
                    StatusCase{"DeviceCommandUnknown", 0x0F, 0x77, 0, 0, "", unknownCommand},
                    StatusCase{"CanCommandUnknown", 1, 0x41, 0, 0, "", unknownCommand},
                    StatusCase{"ProtocolUnknown", 3, 0x10, 0, 0, "20 A1 07 00", unknownCommand}),
    [](const auto &test) { return std::string(test.param.name); });
