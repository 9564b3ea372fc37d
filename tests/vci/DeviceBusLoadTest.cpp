// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciDeviceBusLoad.h"

#include "tests/support/LogCapture.h"
#include "vci/TzVciByteOrder.h"
#include "vci/TzVciLatestValue.h"
#include "vci/TzVciProtocol.h"
#include "vci/TzVciTypes.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

// A report of the given numbers, one after the other.
TzVciProtocolData report(const std::vector<std::uint32_t> &numbers)
{
    std::vector<std::uint8_t> payload(4 * numbers.size());
    for (std::size_t i = 0; i < numbers.size(); ++i)
        TzVciByteOrder::store(&payload[4 * i], numbers[i]);
    TzVciProtocolData record;
    record.protocol = TzVciProtocolId::can;
    record.command = TzVciCommand::busLoad;
    setProtocolPayload(record, payload);
    return record;
}

const TzVciProtocolData fullReport = report({1'000'000, 111, 250'000, 222, 500'000, 10, 20, 30});

} // namespace

TEST(DeviceBusLoad, SizesFollowTheChannelCount)
{
    const TzVciDeviceBusLoad busLoad(4);
    EXPECT_EQ(busLoad.channelCount(), 4);
    EXPECT_EQ(busLoad.minimumLength(), 36);
    EXPECT_EQ(busLoad.fullLength(), 48);
    EXPECT_EQ(busLoad.reportFrameBytes(), 57);
    EXPECT_EQ(busLoad.channels().size(), 4u);
}

TEST(DeviceBusLoad, ACountOfZeroOrBelowIsTwo)
{
    EXPECT_EQ(TzVciDeviceBusLoad(0).channelCount(), 2);
    EXPECT_EQ(TzVciDeviceBusLoad(-1).channelCount(), 2);
}

TEST(DeviceBusLoad, ReadsChannelsAndDeviceCounters)
{
    TzVciDeviceBusLoad busLoad(2);
    busLoad.storeReport(fullReport);
    EXPECT_TRUE(busLoad.hasNewData());
    EXPECT_EQ(busLoad.periodUs(), 0u); // nothing is decoded on the receive thread
    busLoad.process();
    EXPECT_FALSE(busLoad.hasNewData());
    EXPECT_EQ(busLoad.receivedLength(), 32);
    EXPECT_EQ(busLoad.periodUs(), 1'000'000u);
    EXPECT_EQ(busLoad.channels()[0].frames, 111u);
    EXPECT_EQ(busLoad.channels()[0].busyTime, 250'000u);
    EXPECT_DOUBLE_EQ(busLoad.channels()[0].loadPercent, 25.0);
    EXPECT_EQ(busLoad.channels()[1].frames, 222u);
    EXPECT_DOUBLE_EQ(busLoad.channels()[1].loadPercent, 50.0);
    EXPECT_EQ(busLoad.deviceRxFrames(), 10u);
    EXPECT_EQ(busLoad.deviceRxBytes(), 20u);
    EXPECT_EQ(busLoad.deviceTxBytes(), 30u + 41u); // and the report itself
}

TEST(DeviceBusLoad, CountersAreReadFromTheEndWhateverANewerDeviceInserts)
{
    TzVciDeviceBusLoad busLoad(2);
    busLoad.storeReport(report({100, 1, 2, 3, 4, 0xDEAD, 0xBEEF, 10, 20, 30}));
    busLoad.process();
    EXPECT_EQ(busLoad.channels()[1].frames, 3u);
    EXPECT_EQ(busLoad.deviceRxFrames(), 10u);
    EXPECT_EQ(busLoad.deviceRxBytes(), 20u);
    EXPECT_EQ(busLoad.deviceTxBytes(), 71u);
}

TEST(DeviceBusLoad, ALengthBetweenMinimumAndFullLeavesTheDeviceCounters)
{
    TzVciDeviceBusLoad busLoad(2);
    busLoad.storeReport(fullReport);
    busLoad.process();
    busLoad.storeReport(report({200, 7, 100, 8, 150, 98, 99})); // 28 bytes, full are 32
    busLoad.process();
    EXPECT_EQ(busLoad.periodUs(), 200u);
    EXPECT_EQ(busLoad.channels()[0].frames, 7u);
    EXPECT_DOUBLE_EQ(busLoad.channels()[1].loadPercent, 75.0);
    EXPECT_EQ(busLoad.deviceRxFrames(), 10u);
    EXPECT_EQ(busLoad.deviceRxBytes(), 20u);
    EXPECT_EQ(busLoad.deviceTxBytes(), 71u);
}

TEST(DeviceBusLoad, APeriodOfZeroChangesNothing)
{
    const tztest::LogCapture log;
    TzVciDeviceBusLoad busLoad(2);
    busLoad.storeReport(fullReport);
    busLoad.process();
    busLoad.storeReport(report({0, 7, 8, 9, 10, 1, 2, 3}));
    busLoad.process();
    EXPECT_FALSE(busLoad.hasNewData());
    EXPECT_EQ(busLoad.periodUs(), 1'000'000u);
    EXPECT_EQ(busLoad.channels()[0].frames, 111u);
    EXPECT_DOUBLE_EQ(busLoad.channels()[0].loadPercent, 25.0);
    EXPECT_EQ(busLoad.deviceRxFrames(), 10u);
    EXPECT_TRUE(log.lines().empty());
}

TEST(DeviceBusLoad, AReportThatIsTooShortIsAWarning)
{
    const tztest::LogCapture log;
    TzVciDeviceBusLoad busLoad(2);
    busLoad.storeReport(report({1000, 1, 2, 3}));
    busLoad.process();
    EXPECT_TRUE(
        log.has(2, "Received busload data is too short. Expected at least 20 bytes for 2 channels, but got 16."));
    EXPECT_EQ(busLoad.periodUs(), 0u);
}

TEST(DeviceBusLoad, LengthsOutsideOneTo512AreNotStored)
{
    TzVciDeviceBusLoad busLoad(2);
    for (int length : {0, 513, 0xFFFF}) {
        TzVciProtocolData record = fullReport;
        record.length = static_cast<std::uint16_t>(length);
        busLoad.storeReport(record);
        EXPECT_FALSE(busLoad.hasNewData()) << length;
    }
}

TEST(DeviceBusLoad, OfALengthAboveTheRecordTheEndIsNotMadeUp)
{
    TzVciDeviceBusLoad busLoad(2);
    busLoad.storeReport(fullReport);
    busLoad.process();
    TzVciProtocolData record = report({400, 5, 100});
    record.length = 512;
    busLoad.storeReport(record);
    busLoad.process();
    EXPECT_EQ(busLoad.receivedLength(), 122);
    EXPECT_DOUBLE_EQ(busLoad.channels()[0].loadPercent, 25.0);
    EXPECT_EQ(busLoad.deviceRxFrames(), 10u); // the counters stood where nothing was held
}

// 4 bytes of the period and 8 for each channel: of 15 channels the last is cut, of 14 all are there.
TEST(DeviceBusLoad, OfMoreChannelsThanARecordHoldsThoseThatArrivedAreDecoded)
{
    const tztest::LogCapture log;
    TzVciDeviceBusLoad busLoad(20);
    std::vector<std::uint32_t> numbers{1000};
    for (std::uint32_t i = 0; i < 20; ++i)
        numbers.insert(numbers.end(), {100 + i, 10 * i});
    TzVciProtocolData record = report(numbers);
    record.length = 164; // as the wire said; the record holds 122 of them
    busLoad.storeReport(record);
    busLoad.process();
    EXPECT_TRUE(
        log.has(2, "Received busload data is too short. Expected at least 164 bytes for 20 channels, but got 122."));
    EXPECT_EQ(busLoad.periodUs(), 1000u);
    EXPECT_EQ(busLoad.channels()[13].frames, 113u);
    EXPECT_DOUBLE_EQ(busLoad.channels()[13].loadPercent, 13.0);
    EXPECT_EQ(busLoad.channels()[14].frames, 0u); // six of its eight bytes arrived
    EXPECT_EQ(busLoad.deviceRxFrames(), 0u);
}

TEST(DeviceBusLoad, AShortReportOfManyChannelsChangesNothing)
{
    const tztest::LogCapture log;
    TzVciDeviceBusLoad busLoad(20);
    busLoad.storeReport(report({1000, 5, 100, 6, 200})); // 20 bytes on the wire: nothing was cut
    busLoad.process();
    EXPECT_TRUE(
        log.has(2, "Received busload data is too short. Expected at least 164 bytes for 20 channels, but got 20."));
    EXPECT_EQ(busLoad.periodUs(), 0u);
    EXPECT_EQ(busLoad.channels()[0].frames, 0u);
    EXPECT_DOUBLE_EQ(busLoad.channels()[0].loadPercent, 0.0);
}

TEST(DeviceBusLoad, ALoadAboveThePeriodIsToldAsItIs)
{
    TzVciDeviceBusLoad busLoad(1);
    busLoad.storeReport(report({1000, 1, 1500}));
    busLoad.process();
    EXPECT_DOUBLE_EQ(busLoad.channels()[0].loadPercent, 150.0);
}

TEST(DeviceBusLoad, FourteenChannelsFitARecordWithoutTheDeviceCounters)
{
    const tztest::LogCapture log;
    TzVciDeviceBusLoad busLoad(14);
    EXPECT_EQ(busLoad.minimumLength(), 116);
    TzVciProtocolData record = report(std::vector<std::uint32_t>(29, 100));
    record.length = 128; // with the counters, which the record does not hold
    busLoad.storeReport(record);
    busLoad.process();
    EXPECT_TRUE(log.lines().empty());
    EXPECT_DOUBLE_EQ(busLoad.channels()[13].loadPercent, 100.0);
    EXPECT_EQ(busLoad.deviceRxBytes(), 0u);
}

TEST(DeviceBusLoad, AReportShorterThanThePeriodDecodesNothingWhateverTheChannelCount)
{
    const tztest::LogCapture log;
    TzVciDeviceBusLoad busLoad(20);
    TzVciProtocolData record = report({1000});
    record.length = 3;
    busLoad.storeReport(record);
    busLoad.process();
    EXPECT_EQ(busLoad.periodUs(), 0u);
    EXPECT_EQ(log.countContaining(2, "too short"), 1u);
}

TEST(DeviceBusLoad, AHostileChannelCountIsBounded)
{
    const tztest::LogCapture log;
    TzVciDeviceBusLoad busLoad(1'000'000);
    EXPECT_EQ(busLoad.channelCount(), 255);
    TzVciProtocolData record = fullReport;
    record.length = 512;
    busLoad.storeReport(record);
    busLoad.process();
    EXPECT_EQ(log.countContaining(2, "too short"), 1u);
    EXPECT_EQ(busLoad.channels()[0].frames, 111u);
}

TEST(DeviceBusLoad, TheLatestReportWins)
{
    TzVciDeviceBusLoad busLoad(1);
    for (std::uint32_t i = 1; i <= 5; ++i)
        busLoad.storeReport(report({100, i, i, 0}));
    busLoad.process();
    EXPECT_EQ(busLoad.channels()[0].frames, 5u);
    EXPECT_FALSE(busLoad.hasNewData());
}

// Reports of which all numbers are equal: a torn one would show.
TEST(DeviceBusLoad, ReportsAreNeverTorn)
{
    TzVciDeviceBusLoad busLoad(8);
    constexpr std::uint32_t last = 20'000;
    std::thread receiving([&] {
        for (std::uint32_t i = 1; i <= last; ++i)
            busLoad.storeReport(report(std::vector<std::uint32_t>(20, i)));
    });
    std::uint32_t seen = 0;
    while (seen < last) {
        busLoad.process();
        const std::uint32_t now = busLoad.periodUs();
        ASSERT_GE(now, seen);
        seen = now;
        for (const auto &channel : busLoad.channels())
            ASSERT_EQ(channel.frames, now);
        ASSERT_EQ(busLoad.deviceRxBytes(), now);
    }
    receiving.join();
}

TEST(LatestValue, IsTakenOnce)
{
    TzVciLatestValue<int> value;
    EXPECT_FALSE(value.take());
    value.next() = 5;
    value.publish();
    EXPECT_TRUE(value.isFresh());
    EXPECT_TRUE(value.take());
    EXPECT_EQ(value.value(), 5);
    EXPECT_FALSE(value.take());
    EXPECT_EQ(value.value(), 5);
}
