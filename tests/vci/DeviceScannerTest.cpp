// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciDeviceScanner.h"

#include "tests/support/LogCapture.h"
#include "tests/support/WaitFor.h"
#include "tests/vci/DeviceFixture.h"
#include "tests/vci/DiscoveryResponder.h"
#include "vci/TzVciDeviceStore.h"
#include "vci/TzVciScanWorker.h"

#include <chrono>
#include <thread>
#include <utility>

using namespace std::chrono_literals;
using namespace tztest;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// Long enough for a reply over loopback on a busy machine, short enough for a test that has to see it out.
constexpr int shortScanMs = 300;
constexpr int endlessScanMs = 600'000;

} // namespace

class DeviceScanner : public testing::Test
{
protected:
    std::string interfaceIp() const { return network.prefix + ".1"; }

    LogCapture log;
    TzVciNetwork network = DiscoveryResponder::uniqueNetwork();
    TzVciDeviceStore store{network};
    TzVciDeviceScanner scanner{&store, network};
};

TEST_F(DeviceScanner, BroadcastIsElevenBytes)
{
    DiscoveryResponder boxes(network, {});
    EXPECT_FALSE(scanner.scan(shortScanMs));
    ASSERT_THAT(boxes.requests(), testing::SizeIs(1));
    EXPECT_THAT(boxes.requests()[0], ElementsAre(0xAA, 0x55, 0x00, 0xFF, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0xFF));
    EXPECT_TRUE(log.has(logInfo, "Broadcasting on interface " + interfaceIp() + " to 127.255.255.255"));
}

TEST_F(DeviceScanner, FindsTheBoxesThatAnswer)
{
    DiscoveryResponder boxes(network, {{0, 8, 2}, {15, 4, 0}});
    EXPECT_TRUE(scanner.scan(shortScanMs));
    EXPECT_THAT(store.deviceIndices(), ElementsAre(0, 15));
    EXPECT_EQ(store.canChannelCount(0), 8);
    EXPECT_EQ(store.linChannelCount(0), 2);
    EXPECT_EQ(store.canChannelCount(15), 4);
    EXPECT_EQ(store.linChannelCount(15), 0);
    EXPECT_TRUE(log.has(logInfo, "Parsed from " + network.deviceAddress(15) + ": CAN channels=4, LIN channels=0"));
    EXPECT_TRUE(log.has(logInfo, "Scan to device 0"));
    EXPECT_TRUE(log.has(logInfo, "Scan to device 15"));
    EXPECT_FALSE(scanner.isScanning());
}

// A second reply from the same device logs the "already exists" warning and does not set foundAny.
TEST_F(DeviceScanner, KnownDeviceIsNoFind)
{
    DiscoveryResponder boxes(network, {{3, 8, 2}});
    EXPECT_TRUE(scanner.scan(shortScanMs));
    EXPECT_FALSE(scanner.scan(shortScanMs));
    EXPECT_TRUE(log.has(logWarning, "The current Device3 already exists"));
    EXPECT_EQ(log.count(logInfo, "Scan to device 3"), 1U);
}

TEST_F(DeviceScanner, DeviceThatHasGoneStaysInTheTable)
{
    {
        DiscoveryResponder boxes(network, {{3, 8, 2}});
        EXPECT_TRUE(scanner.scan(shortScanMs));
    }
    EXPECT_FALSE(scanner.scan(shortScanMs));
    EXPECT_THAT(store.deviceIndices(), ElementsAre(3));
}

TEST_F(DeviceScanner, ScanLastsItsTime)
{
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(scanner.scan(200));
    EXPECT_GE(std::chrono::steady_clock::now() - start, 200ms);
}

TEST_F(DeviceScanner, AsyncScanTellsItsEnd)
{
    DiscoveryResponder boxes(network, {{1, 1, 1}});
    Recorder<bool> finished;
    QObject::connect(
        &scanner, &TzVciDeviceScanner::scanFinished, &scanner, [&](bool foundAny) { finished.add(foundAny); },
        Qt::DirectConnection);
    scanner.scanAsync(shortScanMs);
    EXPECT_TRUE(waitFor([&] { return finished.size() == 1; }));
    EXPECT_FALSE(scanner.isScanning());
    scanner.scanAsync(1); // the finished thread is joined first
    EXPECT_TRUE(waitFor([&] { return finished.size() == 2; }));
    EXPECT_THAT(finished.values(), ElementsAre(true, false));
}

TEST_F(DeviceScanner, SecondScanIsRefusedWhileOneRuns)
{
    scanner.scanAsync(endlessScanMs);
    EXPECT_TRUE(scanner.isScanning());
    EXPECT_FALSE(scanner.scan(endlessScanMs));
    EXPECT_TRUE(log.has(logWarning, "Scan is already in progress. Ignoring synchronous request."));
    scanner.scanAsync(endlessScanMs);
    EXPECT_TRUE(log.has(logWarning, "Scan is already in progress. Ignoring async request."));
    scanner.cancel();
    EXPECT_FALSE(scanner.isScanning());
}

TEST_F(DeviceScanner, CancelRightAfterTheStartIsNotLost)
{
    for (int i = 0; i < 20; ++i) {
        scanner.scanAsync(endlessScanMs);
        scanner.cancel();
        ASSERT_FALSE(scanner.isScanning());
    }
    scanner.cancel(); // nothing to cancel
    EXPECT_FALSE(scanner.scan(1));
}

// The thread that is to scan has not run yet.
TEST_F(DeviceScanner, CancelOfAScanThatHasOnlyBegunIsNotLost)
{
    auto running = scanner.begin();
    EXPECT_TRUE(scanner.isScanning());
    EXPECT_FALSE(scanner.begin());
    EXPECT_TRUE(log.has(logWarning, "Scan is already in progress. Ignoring synchronous request."));
    scanner.cancel();
    std::jthread other([&] { EXPECT_FALSE(scanner.scan(std::move(running), endlessScanMs)); });
    other.join();
    EXPECT_FALSE(scanner.isScanning());
}

TEST_F(DeviceScanner, ScanThatIsGivenUpMakesRoomForTheNext)
{
    Recorder<bool> finished;
    QObject::connect(
        &scanner, &TzVciDeviceScanner::scanFinished, &scanner, [&](bool foundAny) { finished.add(foundAny); },
        Qt::DirectConnection);
    scanner.begin().reset();
    EXPECT_FALSE(scanner.isScanning());
    EXPECT_THAT(finished.values(), ElementsAre(false));
    EXPECT_FALSE(scanner.scan(1));
    EXPECT_EQ(finished.size(), 2U);
}

TEST_F(DeviceScanner, CancelEndsAScanOnAnotherThread)
{
    std::jthread other([&] { EXPECT_FALSE(scanner.scan(endlessScanMs)); });
    ASSERT_TRUE(tztest::waitBlocking([&] { return scanner.isScanning(); }));
    scanner.cancel();
    other.join();
    EXPECT_FALSE(scanner.isScanning());
}

TEST_F(DeviceScanner, DestructorEndsAScan)
{
    auto local = std::make_unique<TzVciDeviceScanner>(&store, network);
    local->scanAsync(endlessScanMs);
    local.reset();
    SUCCEED() << "came back at once";
}

TEST_F(DeviceScanner, ScanWorksAgainAfterACancelledOne)
{
    DiscoveryResponder boxes(network, {{2, 1, 1}});
    scanner.scanAsync(endlessScanMs);
    EXPECT_TRUE(waitFor([&] { return store.hasDevice(2); }));
    scanner.cancel();
    EXPECT_FALSE(scanner.scan(shortScanMs)); // foundAny of the first scan is forgotten
}

class ScanWorkerTest : public DeviceScanner
{
protected:
    void handle(std::vector<std::uint8_t> datagram, int host)
    {
        ScanWorker(interfaceIp(), network, &store, &foundAny)
            .handleReply(datagram, network.prefix + "." + std::to_string(host));
    }

    std::atomic<bool> foundAny{false};
};

TEST_F(ScanWorkerTest, ReplyWithLength2AddsADeviceWithoutChannels)
{
    handle({0xAA, 0x55, 0, 0xFF, 0, 0, 2, 0, 2, 0}, 130);
    EXPECT_TRUE(store.hasDevice(0));
    EXPECT_EQ(store.canChannelCount(0), 0);
    EXPECT_EQ(store.linChannelCount(0), 0);
    EXPECT_TRUE(foundAny);
}

// The log shows what the box told, the record what can be numbered.
TEST_F(ScanWorkerTest, ChannelCountsAbove255AreStoredAs255)
{
    handle({0xAA, 0x55, 0, 0xFF, 0, 0, 10, 0, 2, 0, 1, 0, 0, 1, 5, 0, 0xFF, 0xFF}, 130);
    EXPECT_TRUE(log.has(logInfo, "Parsed from " + network.deviceAddress(0) + ": CAN channels=256, LIN channels=65535"));
    EXPECT_EQ(store.canChannelCount(0), 255);
    EXPECT_EQ(store.linChannelCount(0), 255);
}

TEST_F(ScanWorkerTest, ReplyFromAnAddressOutsideAddsNothing)
{
    handle({0xAA, 0x55, 0, 0xFF, 0, 0, 2, 0, 2, 0}, 146);
    EXPECT_THAT(store.deviceIndices(), IsEmpty());
    EXPECT_FALSE(foundAny);
    EXPECT_EQ(log.countContaining(logInfo, "Parsed from "), 1U);
}

TEST_F(ScanWorkerTest, JunkIsIgnoredWithoutAWord)
{
    log.clear();
    handle({0xAA, 0x55, 0, 0xFF}, 130);
    handle({}, 130);
    EXPECT_THAT(log.lines(), IsEmpty());
    EXPECT_THAT(store.deviceIndices(), IsEmpty());
}

TEST_F(ScanWorkerTest, InterfaceThatIsNotOursTakesNoPart)
{
    ScanWorker worker("203.0.113.7", network, &store, &foundAny);
    worker.start();
    EXPECT_TRUE(log.has(logWarning, "Failed to start UDP client for VCI search on interface 203.0.113.7"));
    worker.stop();
}

TEST_F(ScanWorkerTest, FailedBroadcastDoesNotStartTheWorker)
{
    network.discoveryPort = 0; // no such destination
    ScanWorker worker(interfaceIp(), network, &store, &foundAny);
    worker.start();
    EXPECT_TRUE(log.has(logError, "Failed to send broadcast packet on interface " + interfaceIp()));
    worker.stop();
    worker.stop();
}

TEST_F(ScanWorkerTest, RunningWorkerIsNotStartedTwice)
{
    ScanWorker worker(interfaceIp(), network, &store, &foundAny);
    worker.start();
    worker.start();
    EXPECT_TRUE(log.has(logWarning, "Scanning device on interface " + interfaceIp()));
}
