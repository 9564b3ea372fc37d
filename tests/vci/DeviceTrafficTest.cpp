// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/vci/DeviceFixture.h"
#include "vci/TzVciDeviceBusLoad.h"

#include <string>
#include <thread>

using namespace tztest;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

void append(std::vector<std::uint8_t> &datagram, const std::vector<std::uint8_t> &frame)
{
    datagram.insert(datagram.end(), frame.begin(), frame.end());
}

std::vector<std::uint8_t> bytes(std::size_t count)
{
    std::vector<std::uint8_t> result(count);
    for (std::size_t i = 0; i < count; ++i)
        result[i] = static_cast<std::uint8_t>(i);
    return result;
}

} // namespace

class DeviceTraffic : public DeviceTest
{
protected:
    // Everything that the box has sent so far has been handled when this returns.
    void settle(TzVciDevice &device) { ASSERT_NE(device.readFirmwareVersion(), 0U); }

    Recorder<std::vector<TzVciMessage>> can;
    Recorder<std::vector<TzVciMessage>> lin;
    TzVciDevice::MessageCallback canSink = [this](const std::vector<TzVciMessage> &batch) { can.add(batch); };
    TzVciDevice::MessageCallback linSink = [this](const std::vector<TzVciMessage> &batch) { lin.add(batch); };
};

TEST_F(DeviceTraffic, CanFrameArrivesWithOriginAndTime)
{
    const auto device = openDevice();
    device->subscribeCan(7, canSink);
    box.sendRaw(ScriptedBox::canFrame(3, 0x18DAF110, 0x1122334455667788, {1, 2, 3}));
    settle(*device);
    ASSERT_EQ(can.size(), 1U);
    ASSERT_EQ(can.values()[0].size(), 1U);
    const TzVciMessage message = can.values()[0][0];
    EXPECT_EQ(message.deviceIndex, 0);
    EXPECT_EQ(message.channelIndex, 3);
    EXPECT_EQ(std::uint64_t{message.timestamp}, 0x1122334455667788U);
    EXPECT_EQ(message.frame.can.canId, 0x18DAF110U);
    EXPECT_EQ(message.frame.can.dataLength, 3);
    EXPECT_EQ(message.frame.can.data[2], 3);
    EXPECT_EQ(message.frame.can.data[3], 0);
    EXPECT_EQ(lin.size(), 0U);
}

TEST_F(DeviceTraffic, LinFrameArrivesFollowedByZeroes)
{
    const auto device = openDevice();
    device->subscribeLin(7, linSink);
    box.sendRaw(ScriptedBox::frame(5, 0x40, 1, bytes(24)));
    settle(*device);
    ASSERT_EQ(lin.size(), 1U);
    const TzVciMessage message = lin.values()[0][0];
    EXPECT_EQ(message.channelIndex, 1);
    EXPECT_EQ(std::uint64_t{message.timestamp}, 0x0F0E0D0C0B0A0908U);
    EXPECT_EQ(message.frame.lin.data[7], 23);
    const auto *raw = reinterpret_cast<const std::uint8_t *>(&message.frame);
    EXPECT_TRUE(std::all_of(raw + 24, raw + 80, [](std::uint8_t byte) { return byte == 0; }));
}

TEST_F(DeviceTraffic, FamiliesOfOneDatagramAreDeliveredApartCanFirst)
{
    const auto device = openDevice();
    Recorder<std::string> order;
    device->subscribeLin(1, [&](const auto &batch) { order.add(fmt::format("lin {}", batch.size())); });
    device->subscribeCan(1, [&](const auto &batch) { order.add(fmt::format("can {}", batch.size())); });
    std::vector<std::uint8_t> datagram = ScriptedBox::frame(5, 0x40, 0, bytes(16));
    append(datagram, ScriptedBox::canFrame(0, 1, 1, {}));
    append(datagram, ScriptedBox::frame(5, 0x40, 0, bytes(20)));
    append(datagram, ScriptedBox::canFrame(0, 2, 2, {}));
    box.sendRaw(datagram);
    settle(*device);
    EXPECT_THAT(order.values(), ElementsAre("can 2", "lin 2"));
}

TEST_F(DeviceTraffic, LongDatagramComesInBatchesOf32)
{
    const auto device = openDevice();
    device->subscribeCan(7, canSink);
    std::vector<std::uint8_t> datagram;
    for (std::uint32_t id = 0; id < 33; ++id)
        append(datagram, ScriptedBox::canFrame(0, id, id, {}));
    box.sendRaw(datagram);
    settle(*device);
    ASSERT_EQ(can.size(), 2U);
    EXPECT_EQ(can.values()[0].size(), 32U);
    ASSERT_EQ(can.values()[1].size(), 1U);
    EXPECT_EQ(can.values()[1][0].frame.can.canId, 32U);
}

// A CAN record of length 15 is not delivered and logs the size error.
TEST_F(DeviceTraffic, CanRecordOf15BytesIsNotDelivered)
{
    const auto device = openDevice();
    device->subscribeCan(7, canSink);
    box.sendRaw(ScriptedBox::frame(1, 0x40, 0, bytes(15)));
    box.sendRaw(ScriptedBox::frame(1, 0x40, 0, bytes(81)));
    settle(*device);
    EXPECT_EQ(can.size(), 0U);
    EXPECT_TRUE(log.has(logError, "The size of the received CAN data is abnormal: 15"));
    EXPECT_TRUE(log.has(logError, "The size of the received CAN data is abnormal: 81"));
}

TEST_F(DeviceTraffic, LinRecordOfImpossibleSizeIsNotDelivered)
{
    const auto device = openDevice();
    device->subscribeLin(7, linSink);
    box.sendRaw(ScriptedBox::frame(5, 0x40, 0, bytes(15)));
    box.sendRaw(ScriptedBox::frame(5, 0x40, 0, bytes(25)));
    settle(*device);
    EXPECT_EQ(lin.size(), 0U);
    EXPECT_TRUE(log.has(logError, "The size of the received LIN data is abnormal: 15"));
    EXPECT_TRUE(log.has(logError, "The size of the received LIN data is abnormal: 25"));
}

TEST_F(DeviceTraffic, SmallestAndLargestRecordsAreDelivered)
{
    const auto device = openDevice();
    device->subscribeCan(7, canSink);
    device->subscribeLin(7, linSink);
    std::vector<std::uint8_t> datagram = ScriptedBox::frame(1, 0x40, 255, bytes(16));
    append(datagram, ScriptedBox::frame(1, 0x40, 0, bytes(80)));
    append(datagram, ScriptedBox::frame(5, 0x40, 0, bytes(16)));
    append(datagram, ScriptedBox::frame(5, 0x40, 0, bytes(24)));
    box.sendRaw(datagram);
    settle(*device);
    ASSERT_EQ(can.size(), 1U);
    ASSERT_EQ(lin.size(), 1U);
    EXPECT_EQ(can.values()[0][0].channelIndex, 255);
    EXPECT_EQ(can.values()[0][1].frame.can.data[63], 79);
    EXPECT_EQ(can.values()[0].size() + lin.values()[0].size(), 4U);
}

TEST_F(DeviceTraffic, TrafficThatLooksLikeAReplyIsNoReply)
{
    const auto device = openDevice();
    box.setRule([](ScriptedBox &self, const auto &) { self.sendRaw(ScriptedBox::frame(1, 0x40, 0, bytes(16))); });
    TzVciProtocolData request;
    request.protocol = 1;
    request.command = 0x40;
    TzVciProtocolData response;
    EXPECT_EQ(device->request(request, response, 50), TzVciResult::requestTimedOut);
}

// A bus load report of 11 bytes is not stored at all.
TEST_F(DeviceTraffic, BusLoadReportsAreKeptFrom12BytesOn)
{
    const auto device = openDevice();
    box.sendRaw(ScriptedBox::frame(1, 0x70, 0, bytes(11)));
    settle(*device);
    EXPECT_FALSE(device->busLoad()->hasNewData());
    box.sendRaw(ScriptedBox::frame(1, 0x70, 0, bytes(12)));
    settle(*device);
    EXPECT_TRUE(device->busLoad()->hasNewData());
    EXPECT_EQ(device->busLoad()->channelCount(), 4);
}

// Two subscribers with the same key: the second replaces the first and is called alone.
TEST_F(DeviceTraffic, SecondSubscriberWithTheSameKeyReplacesTheFirst)
{
    const auto device = openDevice();
    Recorder<int> called;
    device->subscribeCan(42, [&](const auto &) { called.add(1); });
    device->subscribeCan(42, [&](const auto &) { called.add(2); });
    box.sendRaw(ScriptedBox::canFrame(0, 1, 1, {}));
    settle(*device);
    EXPECT_THAT(called.values(), ElementsAre(2));
    EXPECT_TRUE(log.has(logWarning,
                        "Device0: Subscriber 42 is re-subscribing to CAN data. Overwriting previous subscription."));
    EXPECT_EQ(log.count(logInfo, "Device0: Subscriber 42 subscribed to CAN data. Total CAN subscribers: 1."), 2U);
}

TEST_F(DeviceTraffic, SubscribersAreCalledInKeyOrder)
{
    const auto device = openDevice();
    Recorder<int> called;
    for (const int key : {30, 10, 20})
        device->subscribeCan(static_cast<std::uint64_t>(key), [&called, key](const auto &) { called.add(key); });
    box.sendRaw(ScriptedBox::canFrame(0, 1, 1, {}));
    settle(*device);
    EXPECT_THAT(called.values(), ElementsAre(10, 20, 30));
}

TEST_F(DeviceTraffic, SubscriptionsOfEachKindAreLoggedInTheirWords)
{
    const auto device = makeDevice();
    device->subscribeLin(5, linSink);
    device->subscribeLin(5, linSink);
    device->subscribeStatus(6, [](int, std::uint8_t) {});
    device->subscribeStatus(6, [](int, std::uint8_t) {});
    EXPECT_TRUE(log.has(logInfo, "Device0: Subscriber 5 subscribed to LIN data. Total LIN subscribers: 1."));
    EXPECT_TRUE(
        log.has(logWarning, "Device0: Subscriber 5 is re-subscribing to LIN data. Overwriting previous subscription."));
    EXPECT_TRUE(log.has(logInfo, "Device0: Subscriber 6 subscribed to status changed. Total status subscribers: 1."));
    EXPECT_TRUE(log.has(
        logWarning, "Device0: Subscriber 6 is re-subscribing to status changed. Overwriting previous subscription."));
}

TEST_F(DeviceTraffic, UnsubscribedIsNotCalledAgain)
{
    const auto device = openDevice();
    device->subscribeCan(1, canSink);
    device->subscribeCan(2, [](const auto &) {});
    device->unsubscribeCan(1);
    EXPECT_TRUE(
        log.has(logInfo, "Device0: Subscriber 1 unsubscribed from CAN data. Total CAN subscribers remaining: 1."));
    device->unsubscribeCan(1);
    EXPECT_TRUE(log.has(logWarning, "Device0: Subscriber 1 attempted to unsubscribe from CAN data but was not found. "
                                    "Total CAN subscribers: 1."));
    box.sendRaw(ScriptedBox::canFrame(0, 1, 1, {}));
    settle(*device);
    EXPECT_EQ(can.size(), 0U);
}

TEST_F(DeviceTraffic, EmptyCallbackIsPassedOver)
{
    const auto device = openDevice();
    device->subscribeCan(1, nullptr);
    device->subscribeCan(2, canSink);
    box.sendRaw(ScriptedBox::canFrame(0, 1, 1, {}));
    settle(*device);
    EXPECT_EQ(can.size(), 1U);
}

// Subscribing and leaving while frames pour in; what the sanitizers say about it counts.
TEST_F(DeviceTraffic, SubscribersComeAndGoUnderTraffic)
{
    const auto device = openDevice();
    std::atomic<bool> stop{false};
    std::jthread sender([&] {
        const auto frame = ScriptedBox::canFrame(0, 1, 1, {1, 2, 3});
        while (!stop) {
            box.sendRaw(frame);
            std::this_thread::yield();
        }
    });
    for (int round = 0; round < 50; ++round) {
        auto local = std::make_unique<std::atomic<int>>(0);
        device->subscribeCan(
            9, [counter = local.get()](const auto &batch) { *counter += static_cast<int>(batch.size()); });
        EXPECT_TRUE(waitFor([&] { return *local > 0; }));
        device->unsubscribeCan(9);
    } // the counter is gone: nobody may call any more
    stop = true;
}

// Junk of every kind, and the device is as it was.
TEST_F(DeviceTraffic, JunkChangesNothing)
{
    const auto device = openDevice();
    device->subscribeCan(7, canSink);
    std::uint32_t state = 1;
    for (int i = 0; i < 500; ++i) {
        std::vector<std::uint8_t> datagram{0x55, 0xAA};
        for (int k = 0; k < i % 90 + 1; ++k) {
            state = state * 1664525 + 1013904223;
            datagram.push_back(static_cast<std::uint8_t>(state >> 24));
        }
        box.sendRaw(datagram);
    }
    settle(*device);
    EXPECT_TRUE(device->communication()->isConnected());
}
