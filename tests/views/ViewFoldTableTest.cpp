// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/TzViewFoldTable.h"

#include "tests/views/ViewFrames.h"

#include <gtest/gtest.h>

#include <limits>

using namespace tztest;

namespace {

TEST(ViewFoldTable, AFirstFrameCountsOneWithoutCycleOrRow)
{
    TzViewFoldTable table;
    EXPECT_EQ(table.find(7), nullptr);
    const TzViewFoldEntry &entry = table.fold(7, at(100, canMessage(7)));
    EXPECT_EQ(entry.count, 1u);
    EXPECT_EQ(entry.cycleMs, 0.0);
    EXPECT_EQ(entry.row, TzViewFoldEntry::noRow);
    EXPECT_EQ(table.find(7), &entry);
}

TEST(ViewFoldTable, CycleIsTheIntervalThenSmoothed)
{
    TzViewFoldTable table;
    table.fold(1, at(1'000'000, canMessage(1)));
    EXPECT_DOUBLE_EQ(table.fold(1, at(1'100'000, canMessage(1))).cycleMs, 10.0);
    EXPECT_DOUBLE_EQ(table.fold(1, at(1'300'000, canMessage(1))).cycleMs, 10.0 * 0.7 + 20.0 * 0.3);
    EXPECT_EQ(table.find(1)->count, 3u);
}

TEST(ViewFoldTable, TheWeightsAreThoseTwoNumbersToTheLastBit)
{
    TzViewFoldTable table;
    table.fold(1, at(0, canMessage(1)));
    table.fold(1, at(50'000, canMessage(1)));
    const double smoothed = table.fold(1, at(350'000, canMessage(1))).cycleMs;
    EXPECT_EQ(smoothed, 5.0 * 0.7 + 30.0 * 0.3);
    EXPECT_NE(smoothed, 5.0 * 0.7 + 30.0 * (1.0 - 0.7));
}

TEST(ViewFoldTable, AnIntervalOfZeroIsReplacedByTheNext)
{
    TzViewFoldTable table;
    table.fold(1, at(5, canMessage(1)));
    EXPECT_EQ(table.fold(1, at(5, canMessage(1))).cycleMs, 0.0);
    EXPECT_DOUBLE_EQ(table.fold(1, at(20'005, canMessage(1))).cycleMs, 2.0);
}

TEST(ViewFoldTable, ATimeRunningBackwardsWraps)
{
    TzViewFoldTable table;
    table.fold(1, at(10'000, canMessage(1)));
    const double wrapped = static_cast<double>(std::numeric_limits<std::uint64_t>::max() - 9'999) / 10'000.0;
    EXPECT_DOUBLE_EQ(table.fold(1, at(0, canMessage(1))).cycleMs, wrapped);
}

TEST(ViewFoldTable, KeepsTheNewestFrame)
{
    TzViewFoldTable table;
    table.fold(1, canData({1}, canMessage(1)));
    table.fold(1, canData({2}, canMessage(1)));
    EXPECT_EQ(table.find(1)->message.frame.can.data[0], 2);
}

TEST(ViewFoldTable, IteratesInOrderOfFirstAppearance)
{
    TzViewFoldTable table;
    for (const std::uint32_t id : {30, 10, 20, 10, 30, 5})
        table.fold(id, canMessage(id));
    std::vector<std::uint32_t> order;
    for (const TzViewFoldEntry &entry : table)
        order.push_back(entry.message.frame.can.canId);
    EXPECT_EQ(order, (std::vector<std::uint32_t>{30, 10, 20, 5}));
}

TEST(ViewFoldTable, FindsEveryKeyOfALargeTable)
{
    TzViewFoldTable table;
    constexpr std::uint64_t keyCount = 100'000;
    const auto key = [](std::uint64_t n) { return n << 36 | n * 2654435761u; };
    const TzViewFoldEntry &first = table.fold(key(0), canMessage(0));
    for (std::uint64_t n = 1; n < keyCount; ++n)
        table.fold(key(n), canMessage(static_cast<std::uint32_t>(n)));
    EXPECT_EQ(table.size(), keyCount);
    EXPECT_EQ(table.find(key(0)), &first) << "entries stay where they are";
    for (std::uint64_t n = 0; n < keyCount; ++n) {
        const TzViewFoldEntry *entry = table.find(key(n));
        ASSERT_NE(entry, nullptr);
        ASSERT_EQ(entry->message.frame.can.canId, n);
    }
    EXPECT_EQ(table.find(key(keyCount)), nullptr);
    table.clear();
    EXPECT_EQ(table.size(), 0u);
    EXPECT_EQ(table.find(key(1)), nullptr);
}

} // namespace
