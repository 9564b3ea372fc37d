// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciDeviceStore.h"

#include "tests/vci/DeviceFixture.h"

#include <QSignalSpy>

#include <algorithm>
#include <latch>
#include <thread>

using namespace tztest;
using testing::ElementsAre;
using testing::IsEmpty;

class DeviceStore : public testing::Test
{
protected:
    LogCapture log;
    TzVciDeviceStore store;
};

TEST_F(DeviceStore, DefaultsOfAFoundDevice)
{
    ASSERT_EQ(store.addDevice(3, TzVciDeviceConfig(2, 3)), 0);
    const auto *can = store.canChannelConfig(3, 1);
    ASSERT_NE(can, nullptr);
    EXPECT_EQ(can->baudRate, 500000U);
    EXPECT_EQ(can->type, QStringLiteral("CANFD"));
    EXPECT_EQ(can->fdBaudRate, 2000000U);
    EXPECT_EQ(can->nominalSeg1, 31);
    EXPECT_EQ(can->nominalSeg2, 8);
    EXPECT_EQ(can->dataSeg1, 15);
    EXPECT_EQ(can->dataSeg2, 4);
    EXPECT_TRUE(can->terminalResistorEnabled);
    EXPECT_FALSE(can->isOpen);
    EXPECT_EQ(store.linChannelConfig(3, 0)->baudRate, 19200U);
    EXPECT_EQ(store.linChannelConfig(3, 0)->type, QStringLiteral("Master"));
    EXPECT_EQ(store.linChannelConfig(3, 1)->type, QStringLiteral("Slave"));
    EXPECT_EQ(store.linChannelConfig(3, 2)->type, QStringLiteral("Slave"));
    EXPECT_EQ(store.linChannelConfig(3, 0)->ldfFile, QString());
}

TEST_F(DeviceStore, AddDeviceRefusesIndexesOutsideZeroTo15)
{
    EXPECT_EQ(store.addDevice(-1, {}), -1);
    EXPECT_EQ(store.addDevice(16, {}), -1);
    EXPECT_EQ(store.addDevice(0, {}), 0);
    EXPECT_EQ(store.addDevice(15, {}), 0);
    EXPECT_TRUE(log.has(logWarning, "Attempted to add device with invalid index: -1"));
    EXPECT_TRUE(log.has(logWarning, "Attempted to add device with invalid index: 16"));
    EXPECT_THAT(store.deviceIndices(), ElementsAre(0, 15));
}

TEST_F(DeviceStore, KnownDeviceIsLeftAsItIs)
{
    ASSERT_EQ(store.addDevice(2, TzVciDeviceConfig(4, 1)), 0);
    const QSignalSpy added(&store, &TzVciDeviceStore::deviceAdded);
    EXPECT_EQ(store.addDevice(2, TzVciDeviceConfig(1, 1)), -1);
    EXPECT_TRUE(log.has(logWarning, "The current Device2 already exists"));
    EXPECT_EQ(store.canChannelCount(2), 4);
    EXPECT_EQ(added.count(), 0);
}

// Replies of one box may come in on several interfaces.
TEST_F(DeviceStore, OneOfManyThreadsAddsADevice)
{
    constexpr int threadCount = 8;
    Recorder<int> added;
    QObject::connect(
        &store, &TzVciDeviceStore::deviceAdded, &store, [&](int index) { added.add(index); }, Qt::DirectConnection);
    for (int index = 0; index < 16; ++index) {
        Recorder<int> results;
        std::latch start(threadCount);
        {
            std::vector<std::jthread> threads;
            for (int i = 0; i < threadCount; ++i) {
                threads.emplace_back([&] {
                    start.arrive_and_wait();
                    results.add(store.addDevice(index, TzVciDeviceConfig(1, 1)));
                });
            }
        }
        const std::vector<int> values = results.values();
        EXPECT_EQ(std::count(values.begin(), values.end(), 0), 1);
        EXPECT_EQ(std::count(values.begin(), values.end(), -1), threadCount - 1);
        EXPECT_EQ(added.size(), static_cast<std::size_t>(index) + 1);
        EXPECT_EQ(added.values().back(), index);
    }
}

TEST_F(DeviceStore, AddedDeviceIsToldOnceItIsInTheTable)
{
    bool wasKnown = false;
    QObject::connect(&store, &TzVciDeviceStore::deviceAdded, &store,
                     [&](int index) { wasKnown = index == 7 && store.hasDevice(7); });
    store.addDevice(7, {});
    EXPECT_TRUE(wasKnown);
}

TEST_F(DeviceStore, CurrentDeviceFallsBackToTheLowestIndex)
{
    EXPECT_EQ(store.currentDeviceIndex(), 0);
    store.setCurrentDevice(4);
    EXPECT_EQ(store.currentDeviceIndex(), 0); // the table is empty
    store.addDevice(6, {});
    store.addDevice(3, {});
    store.setCurrentDevice(6);
    EXPECT_EQ(store.currentDeviceIndex(), 6);
    store.setCurrentDevice(9);
    EXPECT_EQ(store.currentDeviceIndex(), 3);
}

TEST_F(DeviceStore, UnknownDevicesAndChannelsReadAsNothing)
{
    store.addDevice(1, TzVciDeviceConfig(2, 1));
    EXPECT_FALSE(store.hasDevice(0));
    EXPECT_EQ(store.canChannelCount(0), 0);
    EXPECT_EQ(store.linChannelCount(0), 0);
    EXPECT_EQ(store.channelConfig(0, 1, 0), nullptr);
    EXPECT_EQ(store.channelConfig(1, 1, 2), nullptr);
    EXPECT_EQ(store.channelConfig(1, 1, -1), nullptr);
    EXPECT_EQ(store.channelConfig(1, 5, 1), nullptr);
    EXPECT_FALSE(store.isChannelOpen(1, 1, 5));
    EXPECT_FALSE(store.isDeviceOpen(0));
    EXPECT_EQ(store.localIP(0), QString());
    store.setLocalIP(0, QStringLiteral("x"));
    store.setDeviceOpen(0, true);
    store.setChannelOpen(0, 1, 0, true);
    EXPECT_FALSE(store.hasDevice(0));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(DeviceStore, OtherProtocolsAreLogged)
{
    store.addDevice(0, TzVciDeviceConfig(1, 1));
    EXPECT_EQ(store.channelConfig(0, 3, 0), nullptr);
    EXPECT_TRUE(log.has(logWarning, "Failed to obtain channel configuration: Unknown protocol(id: 3)"));
    EXPECT_THAT(store.channelIndices(0, 15, -1), IsEmpty());
    EXPECT_TRUE(log.has(logWarning, "Automatically obtain device channel index failed by unknown protocol id: 15"));
    store.setChannelOpen(0, 6, 0, true);
    EXPECT_TRUE(log.has(logWarning, "Setting channel status failed: Unknown protocol(id: 6)"));
    EXPECT_FALSE(store.isChannelOpen(0, 16, 0));
}

TEST_F(DeviceStore, ChannelIndicesOfAFamily)
{
    store.addDevice(0, TzVciDeviceConfig(3, 1));
    EXPECT_THAT(store.channelIndices(0, 1, -1), ElementsAre(0, 1, 2));
    EXPECT_THAT(store.channelIndices(0, 1, 1), ElementsAre(1));
    EXPECT_THAT(store.channelIndices(0, 1, 3), IsEmpty());
    EXPECT_THAT(store.channelIndices(0, 5, -1), ElementsAre(0));
    EXPECT_THAT(store.channelIndices(8, 1, -1), IsEmpty());
}

TEST_F(DeviceStore, OpenFlagsOfChannelsAndDevices)
{
    store.addDevice(0, TzVciDeviceConfig(2, 2));
    store.addDevice(1, TzVciDeviceConfig(2, 2));
    EXPECT_FALSE(store.anyChannelOpen(-1));
    store.setChannelOpen(1, 5, 1, true);
    EXPECT_TRUE(store.isChannelOpen(1, 5, 1));
    EXPECT_TRUE(store.anyChannelOpen(-1));
    EXPECT_TRUE(store.anyLinChannelOpen(1));
    EXPECT_FALSE(store.anyLinChannelOpen(0));
    EXPECT_FALSE(store.anyCanChannelOpen(-1));
    store.setChannelOpen(0, 1, 0, true);
    EXPECT_TRUE(store.anyCanChannelOpen(0));
    EXPECT_FALSE(store.anyCanChannelOpen(1));
    store.setDeviceOpen(1, true);
    EXPECT_TRUE(store.isDeviceOpen(1));
    EXPECT_FALSE(store.isDeviceOpen(0));
    EXPECT_TRUE(store.isDeviceOpen(-1));
}

TEST_F(DeviceStore, UniqueOpenCanChannelNeedsExactlyOne)
{
    store.addDevice(0, TzVciDeviceConfig(2, 1));
    store.addDevice(4, TzVciDeviceConfig(2, 1));
    int device = 77;
    int channel = 78;
    EXPECT_FALSE(store.uniqueOpenCanChannel(device, channel));
    store.setChannelOpen(4, 5, 0, true); // LIN does not count
    EXPECT_FALSE(store.uniqueOpenCanChannel(device, channel));
    EXPECT_EQ(device, 77);
    store.setChannelOpen(4, 1, 1, true);
    EXPECT_TRUE(store.uniqueOpenCanChannel(device, channel));
    EXPECT_EQ(device, 4);
    EXPECT_EQ(channel, 1);
    store.setChannelOpen(0, 1, 0, true);
    EXPECT_FALSE(store.uniqueOpenCanChannel(device, channel));
}

TEST_F(DeviceStore, PointersStayValidWhileDevicesAreAdded)
{
    store.addDevice(8, TzVciDeviceConfig(1, 1));
    TzVciChannelConfig *channel = store.channelConfig(8, 1, 0);
    for (const int index : {0, 1, 2, 3, 9, 10, 11, 15})
        store.addDevice(index, TzVciDeviceConfig(8, 8));
    EXPECT_EQ(store.channelConfig(8, 1, 0), channel);
    channel->baudRate = 125000;
    EXPECT_EQ(store.canChannelConfig(8, 0)->baudRate, 125000U);
}

// Settings are edited by the user while devices open, close and are found.
TEST_F(DeviceStore, SettingsAreEditedWhileOthersReadThem)
{
    store.addDevice(0, TzVciDeviceConfig(1, 1));
    std::atomic<bool> stop{false};
    std::jthread reader([&] {
        while (!stop) {
            const auto *can = store.canChannelConfig(0, 0);
            const QString type = can->type;
            EXPECT_TRUE(type == QLatin1String("CAN") || type == QLatin1String("CANFD")) << type.toStdString();
            EXPECT_NE(can->baudRate, 0U);
            static_cast<void>(store.anyChannelOpen(-1));
        }
    });
    std::jthread adder([&] {
        for (int index = 1; index < 16; ++index)
            store.addDevice(index, TzVciDeviceConfig(8, 8));
    });
    auto *can = store.canChannelConfig(0, 0);
    for (int i = 1; i < 2000; ++i) {
        can->type = i % 2 ? QStringLiteral("CAN") : QStringLiteral("CANFD");
        can->baudRate = static_cast<std::uint32_t>(i);
        store.setChannelOpen(0, 1, 0, i % 2 == 0);
        store.setLocalIP(0, QString::number(i));
    }
    stop = true;
}

struct AddressCase
{
    const char *name;
    const char *lastOctet;
    int index;
};

class IndexFromIp : public DeviceStore, public testing::WithParamInterface<AddressCase>
{
};

// Last octet 146 gives -1, 130 gives 0, 145 gives 15, 129 gives -1.
TEST_P(IndexFromIp, FollowsTheLastOctet)
{
    const QString ip = QString::fromStdString(TzVciNetwork::current().prefix) + '.' + GetParam().lastOctet;
    EXPECT_EQ(store.indexFromIp(ip), GetParam().index);
}

INSTANTIATE_TEST_SUITE_P(Octets, IndexFromIp,
                         testing::Values(AddressCase{"First", "130", 0}, AddressCase{"Last", "145", 15},
                                         AddressCase{"OneBelow", "129", -1}, AddressCase{"OneAbove", "146", -1},
                                         AddressCase{"Negative", "-2147483648", -1}, AddressCase{"Text", "abc", -1},
                                         AddressCase{"Nothing", "", -1}, AddressCase{"Huge", "99999999999", -1}),
                         [](const auto &test) { return std::string(test.param.name); });

TEST_F(DeviceStore, AddressesThatAreRefusedAreLoggedByTheirFault)
{
    const std::string prefix = TzVciNetwork::current().prefix;
    EXPECT_EQ(store.indexFromIp(QString()), -1);
    EXPECT_THAT(log.lines(), IsEmpty());
    // An address of three parts gives -1 with the format warning.
    EXPECT_EQ(store.indexFromIp(QStringLiteral("192.168.201")), -1);
    EXPECT_TRUE(log.has(logWarning, "Invalid IP format: 192.168.201"));
    EXPECT_EQ(store.indexFromIp(QStringLiteral("10.1.2.131")), -1);
    EXPECT_TRUE(log.has(logDebug, "IP 10.1.2.131 does not match network segment " + prefix));
    EXPECT_EQ(store.indexFromIp(QString::fromStdString(prefix + ".x")), -1);
    EXPECT_TRUE(log.has(logWarning, "Invalid last octet in IP: " + prefix + ".x"));
    EXPECT_EQ(store.indexFromIp(QString::fromStdString(prefix + ".146")), -1);
    EXPECT_TRUE(log.has(logDebug, "Calculated index 16 for IP " + prefix + ".146 is out of range."));
}

TEST(DeviceStoreNetwork, RealAddressesBeginAt130)
{
    const TzVciDeviceStore store{TzVciNetwork()};
    EXPECT_EQ(store.deviceIp(0), QStringLiteral("192.168.201.130"));
    EXPECT_EQ(store.deviceIp(15), QStringLiteral("192.168.201.145"));
    EXPECT_EQ(store.deviceIp(16), QString());
    EXPECT_EQ(store.deviceIp(-1), QString());
    EXPECT_EQ(store.indexFromIp(QStringLiteral("192.168.201.145")), 15);
}
