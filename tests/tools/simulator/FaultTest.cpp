// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/tools/simulator/SimulatorFixture.h"

#include "tools/simulator/FaultSchedule.h"

#include <cerrno>

using namespace tzsimtest;
using namespace std::chrono_literals;
using tzsim::FaultSpec;
using tzsim::ReplyFault;

namespace {

const Bytes rate = hex("20 A1 07 00");

class SimulatorFault : public OneBoxFixture<3, 1>
{
protected:
    void sendVersionRequest() { host->send(hostFrame(0x0F, 0x60, 0, 0, {1})); }
};

} // namespace

TEST_F(SimulatorFault, ChosenChannelIsRefusedByCode)
{
    box->refuse(1, 0x10, 2, 0x33);
    EXPECT_EQ(request(*host, 1, 0x10, 1, 0, rate), Bytes{0});
    host->send(hostFrame(1, 0x10, 2, 0, rate));
    EXPECT_EQ(toHex(host->receiveBytes()), "55 aa 01 10 02 00 01 00 33 00");
    EXPECT_FALSE(box->canChannel(2).open) << "a refused request has no effect";
    EXPECT_EQ(box->requests().size(), 2U) << "but it is logged";
    box->clearFaults();
    EXPECT_EQ(request(*host, 1, 0x10, 2, 0, rate), Bytes{0});
}

TEST_F(SimulatorFault, ChosenParameterIsRefused)
{
    openCan(*host, 0);
    box->refuseParameter(0, 38, 9);
    EXPECT_EQ(request(*host, 1, 0x60, 0, 2, hex("01 20 A1 07 00")), Bytes{0});
    EXPECT_EQ(request(*host, 1, 0x60, 0, 2, hex("26 20 A1 07 00")), Bytes{9});
    EXPECT_EQ(request(*host, 1, 0x60, 0, 5), Bytes{0});
}

TEST_F(SimulatorFault, ApplyCloseResistorAndVersionCanBeRefused)
{
    openCan(*host, 0);
    box->addReplyFault({.match = {.protocol = 1, .command = 0x60, .param = 5}, .code = 2});
    box->refuse(1, 0x20, 0, 3);
    box->refuse(0x0F, 0x30, 0, 4);
    box->refuse(0x0F, 0x60, 0, 5);
    EXPECT_EQ(request(*host, 1, 0x60, 0, 5), Bytes{2});
    EXPECT_EQ(request(*host, 1, 0x20, 0, 0), Bytes{3});
    EXPECT_EQ(request(*host, 0x0F, 0x30, 0, 0, {1}), Bytes{4});
    EXPECT_EQ(request(*host, 0x0F, 0x60, 0, 0, {1}), Bytes{5});
    EXPECT_TRUE(box->canChannel(0).open);
    EXPECT_FALSE(box->canChannel(0).resistor);
}

TEST_F(SimulatorFault, LimitedFaultEndsByItself)
{
    box->addReplyFault({.match = {.protocol = 1}, .code = 7, .times = 2});
    EXPECT_EQ(request(*host, 1, 0x10, 0, 0, rate), Bytes{7});
    EXPECT_EQ(request(*host, 1, 0x10, 1, 0, rate), Bytes{7});
    EXPECT_EQ(request(*host, 1, 0x10, 0, 0, rate), Bytes{0});
}

TEST_F(SimulatorFault, DroppedRequestIsNotAnswered)
{
    box->addReplyFault({.match = {.command = 0x10}, .kind = ReplyFault::Kind::drop});
    host->send(hostFrame(1, 0x10, 0, 0, rate));
    expectNothingWaits(*host);
    EXPECT_EQ(box->openChannels(), 0);
}

TEST_F(SimulatorFault, LateReplyComesBehindLaterOnes)
{
    box->addReplyFault({.match = {.channel = 1}, .kind = ReplyFault::Kind::delay, .delay = 80ms});
    box->addReplyFault({.match = {.channel = 2}, .kind = ReplyFault::Kind::delay, .delay = 40ms});
    const auto sentAt = std::chrono::steady_clock::now();
    for (const std::uint8_t channel : {1, 2, 0})
        host->send(hostFrame(1, 0x10, channel, 0, rate));
    EXPECT_EQ(split(host->receiveBytes()).at(0).channel, 0);
    EXPECT_EQ(split(host->receiveBytes()).at(0).channel, 2);
    EXPECT_EQ(split(host->receiveBytes()).at(0).channel, 1);
    EXPECT_GE(std::chrono::steady_clock::now() - sentAt, 80ms);
    EXPECT_EQ(box->openChannels(), 3) << "the request itself took effect at once";
}

TEST_F(SimulatorFault, AllRepliesCanBeLate)
{
    box->setReplyDelay(30ms);
    const auto sentAt = std::chrono::steady_clock::now();
    expectNothingWaits(*host);
    EXPECT_GE(std::chrono::steady_clock::now() - sentAt, 30ms);
    box->setReplyDelay(0ms);
    expectNothingWaits(*host);
}

TEST_F(SimulatorFault, ReplyOfWrongLength)
{
    box->addReplyFault({.match = {.command = 0x60}, .kind = ReplyFault::Kind::resize, .length = 3, .times = 1});
    box->addReplyFault({.match = {.command = 0x40}, .kind = ReplyFault::Kind::resize, .length = 0, .times = 1});
    box->addReplyFault({.match = {.command = 0x10}, .kind = ReplyFault::Kind::resize, .length = 2, .times = 1});
    sendVersionRequest();
    EXPECT_EQ(toHex(host->receiveBytes()), "55 aa 0f 60 00 00 03 00 01 02 03 00");
    host->send(hostFrame(0x0F, 0x40, 0, 0, {1}));
    EXPECT_EQ(toHex(host->receiveBytes()), "55 aa 0f 40 00 00 00 00 00");
    host->send(hostFrame(1, 0x10, 0, 0, rate));
    EXPECT_EQ(toHex(host->receiveBytes()), "55 aa 01 10 00 00 02 00 00 00 00");
    sendVersionRequest();
    EXPECT_EQ(host->receiveBytes().size(), 13U);
}

TEST_F(SimulatorFault, SilentBoxHearsButSaysNothing)
{
    openCan(*host, 0);
    box->setSilent(true);
    host->send(hostFrame(1, 0x10, 1, 0, rate));
    host->send(canTransmit(0, 1, 0, {1}));
    box->injectCan(0, tzsim::CanFrame::make(1, {}));
    ASSERT_TRUE(tztest::waitFor([&] { return box->counters().datagramsIn == 3; }));
    EXPECT_FALSE(box->sendEmptyDatagram());
    box->setSilent(false);
    expectNothingWaits(*host);
    EXPECT_EQ(box->openChannels(), 2);
}

TEST_F(SimulatorFault, JunkHoldsNoSyncWord)
{
    expectNothingWaits(*host);
    for (const std::size_t size : {1U, 9U, 1000U}) {
        EXPECT_TRUE(box->sendJunk(size));
        const Bytes junk = host->receiveBytes();
        EXPECT_EQ(junk.size(), size);
        EXPECT_EQ(std::count(junk.begin(), junk.end(), 0x55), 0);
    }
}

TEST_F(SimulatorFault, CutEmptyAndFreeDatagrams)
{
    expectNothingWaits(*host);
    EXPECT_TRUE(box->sendCutDatagram(20));
    const Bytes cut = host->receiveBytes();
    ASSERT_EQ(cut.size(), 20U);
    EXPECT_EQ(toHex({cut.begin(), cut.begin() + 8}), "55 aa 01 40 00 00 18 00");
    EXPECT_TRUE(box->sendCutDatagram(1000));
    EXPECT_EQ(split(host->receiveBytes()).size(), 1U);
    EXPECT_TRUE(box->sendEmptyDatagram());
    EXPECT_TRUE(host->receive().value().bytes.empty());
    EXPECT_TRUE(box->sendFrame(9, 8, 7, 6, hex("01 02")));
    EXPECT_EQ(toHex(host->receiveBytes()), "55 aa 09 08 07 06 02 00 01 02 00");
    EXPECT_TRUE(box->sendDatagram(hex("00 55")));
    EXPECT_EQ(toHex(host->receiveBytes()), "00 55");
    EXPECT_FALSE(box->sendDatagram(Bytes(70'000, 0))) << "no datagram is that long";
    EXPECT_EQ(box->counters().sendErrors, 1U);
}

TEST_F(SimulatorFault, BurstIsNumbered)
{
    expectNothingWaits(*host);
    EXPECT_TRUE(box->sendBurst(1, 1000));
    const auto frames = receiveFrames(*host, 1000);
    ASSERT_EQ(frames.size(), 1000U);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        EXPECT_EQ(frames[i].channel, 1);
        EXPECT_EQ(u32(frames[i].data(), 0), i);
    }
}

TEST_F(SimulatorFault, VanishedBoxIsRefusedByTheStackUntilItComesBack)
{
    openCan(*host, 0);
    box->vanish();
    EXPECT_TRUE(box->vanished());
    EXPECT_FALSE(box->hasHost());
    sendVersionRequest();
    EXPECT_FALSE(host->receive());
    EXPECT_EQ(host->lastError(), ECONNREFUSED);
    box->vanish(); // again, without harm
    box->injectCan(0, tzsim::CanFrame::make(1, {}));

    std::string error;
    ASSERT_TRUE(box->comeBack(&error)) << error;
    EXPECT_TRUE(box->comeBack());
    EXPECT_FALSE(box->vanished());
    EXPECT_EQ(box->openChannels(), 0);
    expectNothingWaits(*host);
    EXPECT_EQ(box->counters().datagramsIn, 2U) << "the counters run on";
}

TEST_F(SimulatorFault, BoxDoesNotComeBackToATakenAddress)
{
    box->vanish();
    tzsim::Simulator intruder;
    intruder.addBox({.index = 0});
    ASSERT_TRUE(intruder.start());
    std::string error;
    EXPECT_FALSE(box->comeBack(&error));
    EXPECT_EQ(error, "cannot bind " + box->address() + ":8000: Address already in use");
    EXPECT_TRUE(box->vanished());
    intruder.stop();
    EXPECT_TRUE(box->comeBack());
}

TEST_F(SimulatorFault, VanishedBoxForgetsItsLateReplies)
{
    box->setReplyDelay(50ms);
    sendVersionRequest();
    ASSERT_TRUE(tztest::waitFor([&] { return box->counters().framesIn == 1; }));
    box->vanish();
    box->clearFaults();
    ASSERT_TRUE(box->comeBack());
    EXPECT_FALSE(host->receive(100ms));
}

TEST_F(SimulatorFault, BoxClosesItsChannelsWhenTheHostIsSilent)
{
    openCan(*host, 0);
    openLin(*host, 0, true);
    EXPECT_EQ(box->counters().heartbeatLosses, 0U);
    box->setHeartbeatTimeout(60ms);
    ASSERT_TRUE(tztest::waitFor([&] { return box->openChannels() == 0; }));
    EXPECT_EQ(box->counters().heartbeatLosses, 1U);
}

TEST_F(SimulatorFault, HeartbeatsKeepTheChannelsOpen)
{
    openCan(*host, 0);
    box->setHeartbeatTimeout(1s);
    const auto end = std::chrono::steady_clock::now() + 1300ms;
    while (std::chrono::steady_clock::now() < end) {
        host->send({0xFF});
        std::this_thread::sleep_for(50ms); // the pace of the heartbeat, not a wait for an outcome
    }
    EXPECT_EQ(box->openChannels(), 1);
    EXPECT_EQ(box->counters().heartbeatLosses, 0U);
}

TEST_F(SimulatorFault, ScheduleLetsFaultsHappenInTime)
{
    expectNothingWaits(*host);
    std::string error;
    std::vector<FaultSpec> specs;
    for (const char *text :
         {"vanish,after=1000,for=500", "junk,size=7,after=100,every=200", "refuse,command=0x10,code=4"})
        specs.push_back(FaultSpec::parse(text, error).value());
    const auto t0 = std::chrono::steady_clock::now();
    tzsim::FaultSchedule schedule(specs, t0);
    EXPECT_EQ(schedule.run(t0, simulator), t0 + 100ms);
    EXPECT_EQ(request(*host, 1, 0x10, 0, 0, rate), Bytes{4});
    EXPECT_EQ(schedule.run(t0 + 100ms, simulator), t0 + 300ms);
    EXPECT_EQ(host->receiveBytes().size(), 7U);
    EXPECT_EQ(schedule.run(t0 + 301ms, simulator), t0 + 500ms);
    EXPECT_EQ(host->receiveBytes().size(), 7U);
    schedule.run(t0 + 1000ms, simulator);
    EXPECT_TRUE(box->vanished());
    schedule.run(t0 + 1499ms, simulator);
    EXPECT_TRUE(box->vanished());
    schedule.run(t0 + 1500ms, simulator);
    EXPECT_FALSE(box->vanished());
}

TEST_F(SimulatorFault, EveryKindOfScheduledFaultActs)
{
    openCan(*host, 0);
    std::string error;
    const auto now = std::chrono::steady_clock::now();
    const auto act = [&](const char *text) {
        const auto spec = FaultSpec::parse(text, error);
        ASSERT_TRUE(spec) << text << ": " << error;
        tzsim::FaultSchedule({*spec}, now).run(now, simulator);
    };
    act("cut,size=15");
    EXPECT_EQ(host->receiveBytes().size(), 15U);
    act("empty");
    EXPECT_TRUE(host->receive().value().bytes.empty());
    act("burst,count=3,channel=2");
    EXPECT_EQ(split(host->receiveBytes()).size(), 3U);
    act("resize,protocol=15,length=1,times=1");
    EXPECT_EQ(request(*host, 0x0F, 0x60, 0, 0, {1}), Bytes{1});
    act("drop,channel=1,times=1");
    host->send(hostFrame(1, 0x10, 1, 0, rate));
    expectNothingWaits(*host);
    act("late,delay=20,times=1");
    const auto sentAt = std::chrono::steady_clock::now();
    expectNothingWaits(*host);
    EXPECT_GE(std::chrono::steady_clock::now() - sentAt, 20ms);
    act("silence");
    EXPECT_FALSE(box->sendEmptyDatagram());
}

TEST(SimulatorFaultSpec, MistakesAreTold)
{
    const auto errorOf = [](const char *text) {
        std::string error;
        EXPECT_FALSE(FaultSpec::parse(text, error)) << text;
        return error;
    };
    EXPECT_EQ(errorOf("explode"), "there is no fault explode");
    EXPECT_EQ(errorOf(""), "there is no fault ");
    EXPECT_EQ(errorOf("refuse,code=256"), "code=256 is not a number of 0 to 255");
    EXPECT_EQ(errorOf("refuse,size=1"), "size is not known here");
    EXPECT_EQ(errorOf("vanish,box=16"), "box=16 is not a number of 0 to 15");
    EXPECT_EQ(errorOf("vanish,after="), "after= is not a number of 0 to 604800000");
    EXPECT_EQ(errorOf("junk,size=-1"), "size=-1 is not a number of 0 to 65000");
    EXPECT_EQ(errorOf("junk,size=1,size=2"), "size is given twice");
    EXPECT_EQ(errorOf("late,every=5"), "every is not known here");
}
