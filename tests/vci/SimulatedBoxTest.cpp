// SPDX-License-Identifier: GPL-3.0-or-later
// The whole device layer against the simulator, whose code of the wire is its own.
#include "tests/support/LogCapture.h"
#include "tests/support/WaitFor.h"
#include "tests/vci/DeviceFixture.h"
#include "tools/simulator/Simulator.h"
#include "vci/TzVciDeviceBusLoad.h"
#include "vci/TzVciDeviceManager.h"
#include "vci/TzVciDeviceScanner.h"
#include "vci/TzVciFrameEncoder.h"

#include <algorithm>
#include <cmath>

using namespace std::chrono_literals;
using namespace tztest;
using testing::ElementsAre;

class SimulatedBox : public testing::Test
{
protected:
    SimulatedBox()
    {
        simulator.addBox({.index = 0, .canChannels = 4, .linChannels = 2, .busLoadPeriod = 20ms});
        simulator.addBox({.index = 1, .canChannels = 2, .linChannels = 1, .clockOffset = 77'000'000'000});
        std::string error;
        isRunning = simulator.start(&error);
        EXPECT_TRUE(isRunning) << error;
        store.addDevice(0, TzVciDeviceConfig(4, 2));
        store.addDevice(1, TzVciDeviceConfig(2, 1));
        manager.setCanCallback([this](const std::vector<TzVciMessage> &batch) { record(can, batch); });
        manager.setLinCallback([this](const std::vector<TzVciMessage> &batch) { record(lin, batch); });
    }
    void TearDown() override
    {
        manager.closeAllDevices();
        QCoreApplication::processEvents(); // a lost link's queued close
    }

    static void record(Recorder<TzVciMessage> &recorder, const std::vector<TzVciMessage> &batch)
    {
        for (const TzVciMessage &message : batch)
            recorder.add(message);
    }
    void openAll(int index)
    {
        ASSERT_EQ(manager.openDevice(index), 0);
        ASSERT_EQ(manager.openChannel(index, 1, -1), 0);
        ASSERT_EQ(manager.openChannel(index, 5, -1), 0);
    }

    LogCapture log;
    bool isRunning = false;
    tzsim::Simulator simulator;
    TzVciDeviceStore store;
    Recorder<TzVciMessage> can;
    Recorder<TzVciMessage> lin;
    TzVciDeviceManager manager{&store};
};

TEST_F(SimulatedBox, ScanFindsTheBoxesWithTheirChannels)
{
    TzVciDeviceStore fresh;
    TzVciDeviceScanner scanner(&fresh);
    EXPECT_TRUE(scanner.scan(500));
    EXPECT_THAT(fresh.deviceIndices(), ElementsAre(0, 1));
    EXPECT_EQ(fresh.canChannelCount(0), 4);
    EXPECT_EQ(fresh.linChannelCount(0), 2);
    EXPECT_EQ(fresh.canChannelCount(1), 2);
}

TEST_F(SimulatedBox, ChannelsOpenWithTheirSettingsAndCloseAgain)
{
    store.canChannelConfig(0, 1)->baudRate = 250000;
    store.canChannelConfig(0, 1)->fdBaudRate = 8000000;
    store.canChannelConfig(0, 1)->terminalResistorEnabled = false;
    store.linChannelConfig(0, 1)->baudRate = 9600;
    openAll(0);
    EXPECT_EQ(simulator.box(0).openChannels(), 6);
    const tzsim::CanChannelState channel = simulator.box(0).canChannel(1);
    EXPECT_EQ(channel.nominalRate, 250000U);
    EXPECT_EQ(channel.dataRate, 8000000U);
    EXPECT_THAT(channel.timing, ElementsAre(31, 8, 15, 4));
    EXPECT_FALSE(channel.resistor);
    EXPECT_TRUE(channel.applied);
    EXPECT_TRUE(simulator.box(0).linChannel(0).master);
    EXPECT_FALSE(simulator.box(0).linChannel(1).master);
    EXPECT_EQ(simulator.box(0).linChannel(1).rate, 9600U);
    EXPECT_EQ(manager.closeDevice(0), 0);
    EXPECT_EQ(simulator.box(0).openChannels(), 0);
}

TEST_F(SimulatedBox, FramesComeInBothFamilies)
{
    openAll(0);
    const std::array<std::uint8_t, 3> data{1, 2, 3};
    simulator.box(0).injectCan(2, tzsim::CanFrame::make(0x321, data));
    simulator.box(0).injectLin(0, tzsim::LinFrame::make(0x11, data));
    EXPECT_TRUE(waitFor([&] { return can.size() == 1 && lin.size() == 1; }));
    const TzVciMessage frame = can.values().front();
    EXPECT_EQ(frame.channelIndex, 2);
    EXPECT_EQ(frame.frame.can.canId, 0x321U);
    EXPECT_EQ(frame.frame.can.frameType, TzVciCanFrameType::received);
    EXPECT_EQ(lin.values().front().frame.lin.linId, 0x11);
}

TEST_F(SimulatedBox, SentFrameIsEchoedAndHeardByTheOtherBoxAtTheSameTime)
{
    ASSERT_TRUE(simulator.join({{0, tzsim::Family::can, 0}, {1, tzsim::Family::can, 1}}));
    openAll(0);
    openAll(1);
    TzVciCanDataType frame;
    frame.canId = 0x7E0;
    frame.dataLength = 2;
    ASSERT_EQ(manager.getDevice(0)->send(encodeCanFrame(0, frame)), 0);
    EXPECT_TRUE(waitFor([&] { return can.size() == 2; }));
    auto frames = can.values();
    std::sort(frames.begin(), frames.end(), [](const auto &a, const auto &b) { return a.deviceIndex < b.deviceIndex; });
    EXPECT_EQ(frames[0].frame.can.frameType, TzVciCanFrameType::transmitted);
    EXPECT_EQ(frames[1].frame.can.frameType, TzVciCanFrameType::received);
    EXPECT_EQ(frames[1].deviceIndex, 1);
    EXPECT_EQ(frames[1].channelIndex, 1);
    // The clocks of the boxes are two hours apart.
    EXPECT_NEAR(manager.globalRelativeSeconds(0, frames[0].timestamp),
                manager.globalRelativeSeconds(1, frames[1].timestamp), 0.2);
}

TEST_F(SimulatedBox, BusLoadReportsAreDecoded)
{
    openAll(0);
    TzVciDeviceBusLoad *busLoad = manager.getDevice(0)->busLoad();
    EXPECT_TRUE(waitFor([&] { return busLoad->hasNewData(); }));
    busLoad->process();
    EXPECT_EQ(busLoad->channelCount(), 4);
    EXPECT_GT(busLoad->periodUs(), 0U);
}

TEST_F(SimulatedBox, RefusedChannelAndParameter)
{
    ASSERT_EQ(manager.openDevice(0), 0);
    simulator.box(0).refuse(1, 0x10, 2, 9);
    EXPECT_EQ(manager.openChannel(0, 1, -1), TzVciResult::openChannelRefused);
    EXPECT_EQ(simulator.box(0).openChannels(), 2);
    EXPECT_TRUE(log.has(logError, "Device 0 channel 3 responsed error code: 9"));
    simulator.box(0).clearFaults();
    simulator.box(0).refuseParameter(3, 0x29);
    EXPECT_EQ(manager.openChannel(0, 1, 3), TzVciResult::parameterRefused);
    EXPECT_EQ(simulator.box(0).openChannels(), 2); // closed again
}

TEST_F(SimulatedBox, VanishedBoxIsLostAndOpensAgainWhenItIsBack)
{
    ASSERT_EQ(manager.openDevice(0), 0);
    simulator.box(0).vanish();
    TzVciCanDataType frame;
    EXPECT_TRUE(waitFor([&] { // the system answers the next datagram with an error
        manager.getDevice(0)->send(encodeCanFrame(0, frame));
        return !store.isDeviceOpen(0);
    }));
    EXPECT_EQ(manager.closeDevice(0), TzVciResult::deviceClosed);
    EXPECT_EQ(manager.openDevice(0), TzVciResult::openFailed);
    std::string error;
    ASSERT_TRUE(simulator.box(0).comeBack(&error)) << error;
    EXPECT_EQ(manager.openDevice(0), 0);
    EXPECT_TRUE(store.isDeviceOpen(0));
}
