// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciDeviceManager.h"

#include "common/PeriodSender.h"
#include "tests/vci/DeviceFixture.h"

#include <chrono>
#include <cmath>
#include <list>
#include <thread>

using namespace std::chrono_literals;
using namespace tztest;
using testing::ElementsAre;
using testing::IsEmpty;

class DeviceManager : public DeviceTest
{
protected:
    std::uint64_t managerKey() const { return reinterpret_cast<std::uintptr_t>(&manager); }

    TzVciDeviceManager manager{&store};
};

TEST_F(DeviceManager, UnknownDeviceIsRefused)
{
    EXPECT_EQ(manager.openDevice(9), -102);
    EXPECT_TRUE(log.has(logError, "Device 9 does not exist"));
    EXPECT_EQ(manager.closeDevice(9), -102);
    EXPECT_EQ(manager.getDevice(9), nullptr);
    EXPECT_EQ(manager.getPeriodSender(9), nullptr);
}

TEST_F(DeviceManager, OpenReadsVersionThenBaseTime)
{
    EXPECT_EQ(manager.openDevice(0), 0);
    EXPECT_THAT(box.requestTexts(), ElementsAre("f 60 0 0: 01", "f 40 0 0: 01"));
    EXPECT_NE(manager.getDevice(0), nullptr);
    EXPECT_EQ(manager.getPeriodSender(0).get(), manager.getDevice(0)->periodSender());
}

TEST_F(DeviceManager, SecondOpenOnlyWarns)
{
    ASSERT_EQ(manager.openDevice(0), 0);
    const auto first = manager.getDevice(0);
    EXPECT_EQ(manager.openDevice(0), 0);
    EXPECT_EQ(manager.getDevice(0), first);
    EXPECT_TRUE(log.has(logWarning, "Device 0 is already opened"));
}

TEST_F(DeviceManager, MinusOneMeansTheCurrentDevice)
{
    store.addDevice(5, TzVciDeviceConfig(1, 1));
    const ScriptedBox other(5);
    store.setCurrentDevice(5);
    EXPECT_EQ(manager.openDevice(-1), 0);
    EXPECT_NE(manager.getDevice(5), nullptr);
    EXPECT_EQ(manager.closeDevice(-1), 0);
    EXPECT_EQ(manager.getDevice(5), nullptr);
}

TEST_F(DeviceManager, FailedOpenLeavesNothing)
{
    box.setRule([](ScriptedBox &self, const auto &request) { self.replyStatus(request, 1); });
    EXPECT_EQ(manager.openDevice(0), TzVciResult::openFailed);
    EXPECT_EQ(manager.getDevice(0), nullptr);
}

TEST_F(DeviceManager, DefaultCallbacksAreAttachedInOrderUnderTheManagersAddress)
{
    manager.setCanCallback([](const auto &) {});
    manager.setLinCallback([](const auto &) {});
    manager.setStatusCallback([](int, std::uint8_t) {});
    ASSERT_EQ(manager.openDevice(0), 0);
    std::vector<std::string> subscriptions;
    for (const auto &line : log.lines()) {
        if (line.text.find(" subscribed to ") != std::string::npos)
            subscriptions.push_back(line.text);
    }
    const auto line = [&](const char *event, const char *subscribers) {
        return fmt::format("Device0: Subscriber {} subscribed to {}. Total {}: 1.", managerKey(), event, subscribers);
    };
    EXPECT_THAT(subscriptions, ElementsAre(line("status changed", "status subscribers"),
                                           line("CAN data", "CAN subscribers"), line("LIN data", "LIN subscribers")));
}

TEST_F(DeviceManager, DefaultCallbacksHearTheDevice)
{
    useClassicCan();
    Recorder<int> frames;
    manager.setStatusCallback([this](int, std::uint8_t cmd) { events.add(cmd); });
    manager.setCanCallback([&](const auto &batch) { frames.add(static_cast<int>(batch.size())); });
    ASSERT_EQ(manager.openDevice(0), 0);
    ASSERT_EQ(manager.openChannel(0, 1, 0), 0);
    box.sendRaw(ScriptedBox::canFrame(0, 1, 1, {}));
    EXPECT_TRUE(waitFor([&] { return frames.size() == 1; }));
    EXPECT_EQ(manager.closeChannel(0, 1, 0), 0);
    EXPECT_EQ(manager.closeDevice(0), 0);
    EXPECT_THAT(events.values(), ElementsAre(1, 3, 3, 4, 5, 6));
}

TEST_F(DeviceManager, EmptyFunctionRemovesADefault)
{
    manager.setStatusCallback([this](int, std::uint8_t cmd) { events.add(cmd); });
    manager.setStatusCallback(nullptr);
    ASSERT_EQ(manager.openDevice(0), 0);
    manager.closeDevice(0);
    EXPECT_THAT(events.values(), IsEmpty());
}

TEST_F(DeviceManager, ChannelsOfADeviceThatIsNotOpen)
{
    EXPECT_EQ(manager.openChannel(0, 1, 0), -102);
    EXPECT_EQ(manager.closeChannel(0, 5, 0), -102);
    EXPECT_TRUE(log.has(logError, "Open channel failed for protocol 1: device 0 not found"));
    EXPECT_TRUE(log.has(logError, "Close channel failed for protocol 5: device 0 not found"));
}

TEST_F(DeviceManager, ClientsAreCountedAndForgottenWithTheDevice)
{
    ASSERT_EQ(manager.openDevice(0), 0);
    manager.acquireClient(0);
    manager.acquireClient(0);
    manager.acquireClient(0);
    manager.releaseClient(0);
    EXPECT_EQ(manager.clientCount(0), 2);
    EXPECT_EQ(manager.closeDevice(0), 0);
    EXPECT_TRUE(log.has(logWarning, "Device 0 is still in use by 2 other clients, but closing it anyway."));
    EXPECT_EQ(manager.clientCount(0), 0);
    manager.releaseClient(0);
    EXPECT_EQ(manager.clientCount(0), 0);
}

// The device was not in the table yet, and yet it must not stay open.
TEST_F(DeviceManager, CloseAllDuringAnOpenClosesThatDeviceToo)
{
    box.setRule([this](ScriptedBox &self, const ScriptedBox::Request &request) {
        if (request.command == 0x40) { // the base time, the last step of the opening
            EXPECT_EQ(manager.closeAllDevices(), 0);
        }
        self.answer(request);
    });
    EXPECT_EQ(manager.openDevice(0), TzVciResult::deviceClosed);
    EXPECT_EQ(manager.getDevice(0), nullptr);
    EXPECT_FALSE(store.isDeviceOpen(0));
    EXPECT_TRUE(log.has(logInfo, "Closed Device 0"));
    box.setRule([](ScriptedBox &self, const ScriptedBox::Request &request) { self.answer(request); });
    EXPECT_EQ(manager.openDevice(0), 0);
}

TEST_F(DeviceManager, CloseAllOfNothingIsSilent)
{
    log.clear();
    EXPECT_EQ(manager.closeAllDevices(), 0);
    EXPECT_THAT(log.lines(), IsEmpty());
}

// Four boxes that do not answer the close take the time of one.
TEST_F(DeviceManager, CloseAllDevicesClosesInParallel)
{
    std::list<ScriptedBox> boxes;
    for (const int index : {1, 2, 3, 4}) {
        store.addDevice(index, TzVciDeviceConfig(1, 1));
        boxes.emplace_back(index);
        ASSERT_EQ(manager.openDevice(index), 0);
        ASSERT_EQ(manager.openChannel(index, 5, 0), 0);
        boxes.back().setRule([](ScriptedBox &, const auto &) {});
    }
    manager.acquireClient(3);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(manager.closeAllDevices(), TzVciResult::closeChannelRefused);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 4 * 500ms);
    EXPECT_TRUE(log.has(logWarning, "Closing Device3 while it's still in use by 1 other clients."));
    EXPECT_TRUE(log.has(logInfo, "Closed all devices"));
    EXPECT_EQ(log.countContaining(logInfo, "Closed Device "), 4U);
    EXPECT_EQ(manager.clientCount(3), 0);
    EXPECT_FALSE(store.isDeviceOpen(-1));
    EXPECT_EQ(manager.getDevice(1), nullptr);
}

TEST_F(DeviceManager, DestructionClosesWhatIsOpen)
{
    useClassicCan();
    {
        TzVciDeviceManager local(&store);
        ASSERT_EQ(local.openDevice(0), 0);
        ASSERT_EQ(local.openChannel(0, 1, 0), 0);
        box.clearRequests();
    }
    EXPECT_THAT(box.requestTexts(), ElementsAre("1 20 0 0: "));
    EXPECT_FALSE(store.isDeviceOpen(0));
}

// The dead object stays in the table until somebody closes it.
TEST_F(DeviceManager, LostDeviceStaysInTheTableUntilItIsClosed)
{
    ASSERT_EQ(manager.openDevice(0), 0);
    const auto lost = manager.getDevice(0);
    box.sendRaw({});
    EXPECT_TRUE(waitFor([&] { return !store.isDeviceOpen(0); }));
    EXPECT_EQ(manager.openDevice(0), 0);
    EXPECT_TRUE(log.has(logWarning, "Device 0 is already opened"));
    EXPECT_FALSE(store.isDeviceOpen(0));
    EXPECT_EQ(manager.closeDevice(0), TzVciResult::deviceClosed);
    EXPECT_EQ(manager.openDevice(0), 0);
    EXPECT_TRUE(store.isDeviceOpen(0));
    EXPECT_NE(manager.getDevice(0), lost);
}

TEST_F(DeviceManager, SenderHeldByACallerKeepsTheDevice)
{
    ASSERT_EQ(manager.openDevice(0), 0);
    const auto sender = manager.getPeriodSender(0);
    EXPECT_EQ(manager.closeDevice(0), 0);
    EXPECT_EQ(sender->clear(), 0); // alive still
}

// setDisplayMode(5) keeps the old mode.
TEST_F(DeviceManager, DisplayModesFromFiveOnAreNotTaken)
{
    EXPECT_EQ(manager.displayMode(), Common::TimestampDisplayMode::GlobalRelativeTime);
    manager.setDisplayMode(4);
    EXPECT_EQ(manager.displayMode(), Common::TimestampDisplayMode::TimeOfDay);
    manager.setDisplayMode(5);
    manager.setDisplayMode(-1);
    EXPECT_EQ(manager.displayMode(), Common::TimestampDisplayMode::TimeOfDay);
    manager.setDisplayMode(Common::TimestampDisplayMode::RelativeTime);
    EXPECT_EQ(manager.displayMode(), Common::TimestampDisplayMode::RelativeTime);
}

TEST_F(DeviceManager, TimeOfTheFirstDeviceStartsAtItsBase)
{
    ASSERT_EQ(manager.openDevice(0), 0); // base time 1000000
    EXPECT_DOUBLE_EQ(manager.globalRelativeSeconds(0, 1'000'000), 0.0);
    EXPECT_DOUBLE_EQ(manager.globalRelativeSeconds(0, 31'000'000), 3.0);
    EXPECT_DOUBLE_EQ(manager.globalRelativeSeconds(0, 0), -0.1);
    EXPECT_EQ(manager.formatTimestamp(0, 31'000'000), "3.000000");
}

class DeviceTime : public DeviceManager
{
protected:
    DeviceTime()
    {
        store.addDevice(1, TzVciDeviceConfig(1, 1));
        useClock(box, 5'000'000);
        useClock(other, 900'000'000);
    }

    // The box's clock stood at `start` when the test began, and runs on.
    void useClock(ScriptedBox &device, std::uint64_t start)
    {
        device.setRule([this, start](ScriptedBox &self, const ScriptedBox::Request &request) {
            if (request.protocol != 15 || request.command != 0x40) {
                self.answer(request);
                return;
            }
            const std::uint64_t now = start + ticksSinceStart();
            std::vector<std::uint8_t> payload;
            for (int i = 0; i < 8; ++i)
                payload.push_back(static_cast<std::uint8_t>(now >> (8 * i)));
            self.reply(request, payload);
        });
    }
    std::uint64_t ticksSinceStart() const
    {
        using Ticks = std::chrono::duration<std::uint64_t, std::ratio<1, 10'000'000>>;
        return std::chrono::duration_cast<Ticks>(std::chrono::steady_clock::now() - begin).count();
    }
    // Runs something that reads a box's clock. How long it takes is how far off a clock may be afterwards.
    template <typename Action> void timed(Action action)
    {
        const std::uint64_t start = ticksSinceStart();
        action();
        tolerance += static_cast<double>(ticksSinceStart() - start) / 1e7;
    }
    void openBoth()
    {
        timed([&] { ASSERT_EQ(manager.openDevice(0), 0); });
        std::this_thread::sleep_for(300ms); // time that has to be put between the two
        timed([&] { ASSERT_EQ(manager.openDevice(1), 0); });
    }
    // How far apart the two devices place one and the same moment.
    double disagreement()
    {
        const std::uint64_t now = ticksSinceStart();
        return std::abs(manager.globalRelativeSeconds(0, 5'000'000 + now) -
                        manager.globalRelativeSeconds(1, 900'000'000 + now));
    }

    double tolerance = 1e-4; // seconds
    const std::chrono::steady_clock::time_point begin = std::chrono::steady_clock::now();
    ScriptedBox other{1};
};

TEST_F(DeviceTime, BoxesOpenedOneAfterTheOtherLineUp)
{
    openBoth();
    EXPECT_LT(disagreement(), tolerance);
    EXPECT_GT(manager.globalRelativeSeconds(0, 5'000'000 + ticksSinceStart()), 0.3 - tolerance);
}

TEST_F(DeviceTime, ResetMakesThePresentTheReference)
{
    openBoth();
    manager.timeManager().setTimeScaleFactor(1e3);
    tolerance = 1e-4;
    const std::uint64_t start = ticksSinceStart();
    timed([&] { manager.resetTimeBase(); });
    EXPECT_LT(disagreement(), tolerance);
    const std::uint64_t now = ticksSinceStart();
    const double sinceReset = static_cast<double>(now - start) / 1e7;
    EXPECT_LT(manager.globalRelativeSeconds(0, 5'000'000 + now), sinceReset + tolerance);
    EXPECT_EQ(manager.timeManager().getTimeScaleFactor(), 1e3);
}

TEST_F(DeviceTime, BoxThatDoesNotAnswerTheResetKeepsItsPlace)
{
    openBoth();
    other.setRule([](ScriptedBox &, const auto &) {});
    manager.resetTimeBase();
    EXPECT_LT(disagreement(), tolerance + 0.1); // the other one's answer took a while too
    EXPECT_LT(manager.globalRelativeSeconds(1, 900'000'000), tolerance - 0.3); // before the new reference
}
