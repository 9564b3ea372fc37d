// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/tools/simulator/SimulatorFixture.h"

using namespace tzsimtest;
using tzsim::CanFrame;
using tzsim::Family;
using tzsim::CanFlag::bitRateSwitch;
using tzsim::CanFlag::extended;
using tzsim::CanFlag::fd;
using tzsim::CanFlag::remote;

namespace {

class SimulatorCan : public SimulatorFixture
{
protected:
    void SetUp() override
    {
        box = &addBox(0, 3, 0);
        other = &addBox(1, 2, 0);
    }
    void startAndConnect()
    {
        start();
        host = makeHost(*box);
        otherHost = makeHost(*other);
    }

    tzsim::Box *box = nullptr;
    tzsim::Box *other = nullptr;
    std::unique_ptr<HostSocket> host;
    std::unique_ptr<HostSocket> otherHost;
};

} // namespace

TEST_F(SimulatorCan, TransmittedFrameComesBackAsEcho)
{
    startAndConnect();
    openCan(*host, 1);
    box->setClockOffset(0x0000000500000000);
    const Bytes sent = hex("AA 55 01 30 01 00 13 00 23 01 00 00 03 00 00 00 00 00 00 00 00 00 00 00 11 22 33 00");
    EXPECT_EQ(toHex(canTransmit(1, 0x123, 0, {0x11, 0x22, 0x33})), toHex(sent));
    host->send(sent);
    const Bytes echo = host->receiveBytes();
    ASSERT_EQ(echo.size(), 28U);
    // Type 1 and the box's time stand where the request has zeroes.
    EXPECT_EQ(toHex({echo.begin(), echo.begin() + 16}), "55 aa 01 40 01 00 13 00 23 01 00 00 03 00 00 01");
    EXPECT_EQ(toHex({echo.begin() + 24, echo.end()}), "11 22 33 00");
    EXPECT_GE(u64(echo, 16), 0x0000000500000000U);
    EXPECT_LE(u64(echo, 16), box->deviceTime());
    EXPECT_EQ(box->counters(Family::can, 1), (tzsim::ChannelCounters{1, 1, 0}));
    EXPECT_EQ(box->transmits().size(), 1U);
    EXPECT_EQ(box->requests().size(), 1U) << "transmit requests have a log of their own";
}

TEST_F(SimulatorCan, FlagsAndLengthsComeBackAsSent)
{
    startAndConnect();
    openCan(*host, 0);
    const std::vector<std::pair<std::uint8_t, std::size_t>> cases = {
        {0, 0}, {0, 8}, {extended, 5}, {remote, 0}, {fd, 64}, {fd | bitRateSwitch, 12}, {fd | extended, 48}};
    for (const auto &[flags, length] : cases) {
        host->send(canTransmit(0, 0x7FF, flags, Bytes(length, 0x5A)));
        const auto frames = receiveFrames(*host, 1);
        ASSERT_EQ(frames.size(), 1U);
        EXPECT_EQ(frames[0].canFlags(), flags);
        EXPECT_EQ(frames[0].canId(), 0x7FFU);
        EXPECT_EQ(frames[0].dataLength(), length);
        EXPECT_EQ(frames[0].data(), Bytes(length, 0x5A));
    }
}

TEST_F(SimulatorCan, SeveralFramesOfOneDatagramAreEchoedInOneDatagramInOrder)
{
    startAndConnect();
    openCan(*host, 0);
    Bytes datagram;
    for (std::uint32_t id = 0; id < 40; ++id) {
        const Bytes frame = canTransmit(0, id, 0, Bytes(8, 1));
        datagram.insert(datagram.end(), frame.begin(), frame.end());
    }
    host->send(datagram);
    const auto frames = split(host->receiveBytes());
    ASSERT_EQ(frames.size(), 40U);
    std::uint64_t last = 0;
    for (std::uint32_t id = 0; id < 40; ++id) {
        EXPECT_EQ(frames[id].canId(), id);
        EXPECT_GE(frames[id].ticks(), last);
        last = frames[id].ticks();
    }
}

TEST_F(SimulatorCan, RejectedTransmitsAreCountedAndNotEchoed)
{
    startAndConnect();
    openCan(*host, 0);
    host->send(canTransmit(1, 0x100, 0, {1}));             // closed
    host->send(canTransmit(0, 0x800, 0, {1}));             // no standard identifier
    host->send(canTransmit(0, 0x20000000, extended, {1})); // no extended identifier
    host->send(canTransmit(0, 0x100, 0, Bytes(9, 0)));     // too long for a classic frame
    host->send(canTransmit(0, 0x100, fd, Bytes(65, 0)));   // too long for any
    host->send(hostFrame(1, 0x30, 0, 0, Bytes(15, 0)));    // cut
    host->send(hostFrame(1, 0x30, 0, 0, Bytes(17, 0)));    // more data than the length says
    host->send(canTransmit(7, 0x100, 0, {1}));             // no such channel
    expectNothingWaits(*host);
    EXPECT_EQ(box->counters(Family::can, 0), (tzsim::ChannelCounters{0, 0, 6}));
    EXPECT_EQ(box->counters(Family::can, 1), (tzsim::ChannelCounters{0, 0, 1}));
    EXPECT_EQ(box->transmits().size(), 8U);
}

TEST_F(SimulatorCan, JoinedChannelsHearEachOther)
{
    ASSERT_TRUE(simulator.join({{0, Family::can, 0}, {0, Family::can, 2}}));
    ASSERT_TRUE(simulator.join({{0, Family::can, 2}, {1, Family::can, 1}}));
    startAndConnect();
    for (const std::uint8_t channel : {0, 1, 2})
        openCan(*host, channel);
    openCan(*otherHost, 1);
    other->setClockOffset(1'000'000'000'000);
    host->send(canTransmit(2, 0x321, 0, {7}));

    const auto frames = receiveFrames(*host, 2);
    ASSERT_EQ(frames.size(), 2U);
    EXPECT_EQ(frames[0].channel, 0);
    EXPECT_EQ(frames[0].canType(), tzsim::CanType::received);
    EXPECT_EQ(frames[1].channel, 2);
    EXPECT_EQ(frames[1].canType(), tzsim::CanType::transmitted);
    const auto others = receiveFrames(*otherHost, 1);
    ASSERT_EQ(others.size(), 1U);
    EXPECT_EQ(others[0].channel, 1);
    EXPECT_EQ(others[0].canType(), tzsim::CanType::received);
    EXPECT_EQ(others[0].data(), Bytes{7});
    EXPECT_GE(others[0].ticks(), 1'000'000'000'000U) << "each box stamps with its own clock";
    EXPECT_LT(frames[0].ticks(), 1'000'000'000'000U);
}

TEST_F(SimulatorCan, ImpossibleJoinsAreRefused)
{
    addBox(2, 1, 1);
    EXPECT_FALSE(simulator.join({{2, Family::can, 0}, {2, Family::lin, 0}}));
    EXPECT_FALSE(simulator.join({{0, Family::can, 0}, {0, Family::can, 3}}));
    EXPECT_FALSE(simulator.join({{0, Family::can, 0}, {9, Family::can, 0}}));
    EXPECT_FALSE(simulator.join({{0, Family::can, -1}}));
}

TEST_F(SimulatorCan, InjectedFrameIsReceivedByTheOpenChannelsOfTheBusAlone)
{
    simulator.join({{0, Family::can, 0}, {1, Family::can, 0}});
    startAndConnect();
    openCan(*host, 0);
    box->injectCan(0, CanFrame::make(0x18FEF100, hex("01 02"), extended));
    box->injectCan(1, CanFrame::make(0x111, {}));
    const auto frames = split(host->receiveBytes());
    ASSERT_EQ(frames.size(), 1U);
    EXPECT_EQ(frames[0].canId(), 0x18FEF100U);
    EXPECT_EQ(frames[0].canFlags(), extended);
    EXPECT_EQ(frames[0].canType(), tzsim::CanType::received);
    expectNothingWaits(*host);
    EXPECT_EQ(other->counters(Family::can, 0).framesSent, 0U);
}

TEST_F(SimulatorCan, SeveralInjectedFramesShareDatagramsOfAtMost1472Bytes)
{
    startAndConnect();
    openCan(*host, 0);
    std::vector<CanFrame> sent(45);
    for (CanFrame &frame : sent)
        frame = CanFrame::make(0x100, Bytes(8, 3));
    box->injectCan(0, sent);
    EXPECT_EQ(host->receiveBytes().size(), 44U * 33);
    EXPECT_EQ(host->receiveBytes().size(), 33U);

    std::vector<CanFrame> many(44 * 40, sent[0]); // more datagrams than are sent at once
    box->injectCan(0, many);
    EXPECT_EQ(receiveFrames(*host, many.size()).size(), many.size());
}

TEST_F(SimulatorCan, ErrorFramesCarryTheCode)
{
    startAndConnect();
    openCan(*host, 0);
    box->injectCanError(0, 0x8000000);
    box->injectCanError(0, 0x41, tzsim::CanType::error2);
    auto frames = receiveFrames(*host, 2);
    EXPECT_EQ(frames[0].canType(), 4);
    EXPECT_EQ(toHex(frames[0].data()), "00 00 00 08");
    EXPECT_EQ(frames[1].canType(), 8);
    EXPECT_EQ(toHex(frames[1].data()), "41 00 00 00");
}

TEST_F(SimulatorCan, NothingIsSentBeforeAHostSpoke)
{
    startAndConnect();
    box->injectCan(0, CanFrame::make(1, {}));
    EXPECT_FALSE(box->hasHost());
    host->send({0xFF});
    ASSERT_TRUE(tztest::waitFor([&] { return box->counters().heartbeats == 1; }));
    EXPECT_FALSE(box->hasHost()) << "a heartbeat alone makes no host";
    EXPECT_FALSE(box->sendEmptyDatagram());
    openCan(*host, 0);
    EXPECT_TRUE(box->hasHost());
    expectNothingWaits(*host);
}

TEST_F(SimulatorCan, TrafficGoesToTheLatestHost)
{
    startAndConnect();
    openCan(*host, 0);
    const auto later = makeHost(*box);
    expectNothingWaits(*later);
    box->injectCan(0, CanFrame::make(0x55, {}));
    EXPECT_EQ(receiveFrames(*later, 1).at(0).canId(), 0x55U);
    EXPECT_FALSE(host->receive(std::chrono::milliseconds(0)));
}

TEST_F(SimulatorCan, StampsOfAChannelNeverGoBackwards)
{
    startAndConnect();
    openCan(*host, 0);
    box->startLoad({.framesPerSecond = 20'000, .canChannels = {0}, .count = 2000});
    std::uint64_t last = 0;
    std::size_t load = 0;
    while (load < 2000) {
        box->injectCan(0, CanFrame::make(0x7FF, {}));
        const Bytes datagram = host->receiveBytes();
        ASSERT_FALSE(datagram.empty());
        for (const BoxFrame &frame : split(datagram)) {
            EXPECT_GE(frame.ticks(), last);
            last = frame.ticks();
            load += frame.canId() != 0x7FF ? 1 : 0;
        }
    }
}
