// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/PeriodSchedule.h"

#include <gtest/gtest.h>

#include <numeric>
#include <string>

using Common::PeriodSchedule;
using Common::SendFrame;
using namespace std::chrono_literals;

namespace {

using TimePoint = PeriodSchedule::TimePoint;

const TimePoint start{1'000'000'123ns};
constexpr TimePoint never = TimePoint::max();

SendFrame frame(std::uint64_t key, std::uint32_t period, std::uint32_t delay = 0, std::size_t size = 4)
{
    SendFrame made;
    made.key = key;
    made.bytes.assign(size, static_cast<char>('a' + key % 26));
    made.period = period;
    made.delay = delay;
    return made;
}

template <typename... Frames> void add(PeriodSchedule &schedule, TimePoint now, Frames &&...frames)
{
    std::vector<SendFrame> list;
    (list.push_back(std::forward<Frames>(frames)), ...);
    schedule.add(std::move(list), now);
}

struct Sent
{
    std::vector<std::string> datagrams;
    std::vector<int> counts;
    std::uint64_t skipped = 0;
    std::chrono::nanoseconds lateness{};
};

Sent sendAt(PeriodSchedule &schedule, TimePoint now)
{
    const auto batch = schedule.begin(now);
    Sent sent;
    sent.lateness = batch.lateness;
    for (const auto &datagram : batch.datagrams) {
        sent.datagrams.emplace_back(datagram.bytes.begin(), datagram.bytes.end());
        sent.counts.push_back(datagram.frameCount);
    }
    EXPECT_EQ(static_cast<std::uint64_t>(std::accumulate(sent.counts.begin(), sent.counts.end(), 0)), batch.frames);
    sent.skipped = schedule.finish();
    return sent;
}

std::string firstDatagram(PeriodSchedule &schedule)
{
    return sendAt(schedule, schedule.prepare()).datagrams.at(0);
}

} // namespace

TEST(PeriodSchedule, EmptyIsNeverDue)
{
    PeriodSchedule schedule;
    EXPECT_EQ(schedule.prepare(), never);
    EXPECT_TRUE(schedule.begin(start).datagrams.empty());
    schedule.finish();
}

TEST(PeriodSchedule, FirstSendIsAtOnceAndEveryFurtherOneAPeriodLater)
{
    PeriodSchedule schedule;
    add(schedule, start, frame(1, 10));
    for (int round = 0; round < 1000; ++round) {
        const TimePoint due = schedule.prepare();
        ASSERT_EQ(due, start + round * 10ms);
        const Sent sent = sendAt(schedule, due + 3ms); // each time late: the grid must not move
        EXPECT_EQ(sent.datagrams, std::vector<std::string>{"bbbb"});
        EXPECT_EQ(sent.lateness, 3ms);
        EXPECT_EQ(sent.skipped, 0U);
    }
}

TEST(PeriodSchedule, DelayMovesTheFirstSend)
{
    PeriodSchedule schedule;
    add(schedule, start, frame(1, 10, 25));
    EXPECT_EQ(schedule.prepare(), start + 25ms);
    sendAt(schedule, start + 25ms);
    EXPECT_EQ(schedule.prepare(), start + 35ms);
}

TEST(PeriodSchedule, FramesAddedApartShareTheMillisecondGrid)
{
    PeriodSchedule schedule;
    add(schedule, start, frame(0, 1));
    sendAt(schedule, start);
    add(schedule, start + 300us, frame(1, 1));
    EXPECT_EQ(schedule.prepare(), start + 1ms);
    EXPECT_EQ(firstDatagram(schedule), "aaaabbbb");
}

TEST(PeriodSchedule, GridStartsAnewWhenNothingRuns)
{
    PeriodSchedule schedule;
    add(schedule, start, frame(0, 1));
    EXPECT_TRUE(schedule.remove(0));
    add(schedule, start + 300us, frame(1, 1));
    EXPECT_EQ(schedule.prepare(), start + 300us);
}

TEST(PeriodSchedule, AddedBeforeTheGridStartsJoinsItsFirstPoint)
{
    PeriodSchedule schedule;
    add(schedule, start, frame(0, 1));
    add(schedule, start - 10us, frame(1, 1)); // another thread read its clock first, then waited
    EXPECT_EQ(firstDatagram(schedule), "aaaabbbb");
}

TEST(PeriodSchedule, FramesDueTogetherLeaveInTheOrderOfTheirAdding)
{
    PeriodSchedule schedule;
    add(schedule, start, frame(2, 2), frame(1, 1), frame(0, 4));
    EXPECT_EQ(firstDatagram(schedule), "ccccbbbbaaaa");
    EXPECT_EQ(firstDatagram(schedule), "bbbb");
    EXPECT_EQ(firstDatagram(schedule), "ccccbbbb");
    EXPECT_EQ(firstDatagram(schedule), "bbbb");
    EXPECT_EQ(firstDatagram(schedule), "ccccbbbbaaaa");
}

TEST(PeriodSchedule, DatagramIsFilledTo1472BytesAndNotOneMore)
{
    PeriodSchedule schedule;
    add(schedule, start, frame(0, 1, 0, 1000), frame(1, 1, 0, 472), frame(2, 1, 0, 1));
    const Sent sent = sendAt(schedule, start);
    EXPECT_EQ(sent.counts, (std::vector<int>{2, 1}));
    EXPECT_EQ(sent.datagrams.at(0).size(), PeriodSchedule::maxDatagramSize);
    EXPECT_EQ(sent.datagrams.at(1), "c");
}

TEST(PeriodSchedule, FrameLongerThanADatagramTravelsAlone)
{
    PeriodSchedule schedule;
    add(schedule, start, frame(0, 1), frame(1, 1, 0, 2000), frame(2, 1));
    EXPECT_EQ(sendAt(schedule, start).counts, (std::vector<int>{1, 1, 1}));
}

TEST(PeriodSchedule, StallSendsOnceAndCountsWhatWasSkipped)
{
    PeriodSchedule schedule;
    add(schedule, start, frame(0, 1), frame(1, 10));
    sendAt(schedule, start);
    // Woken 7.4 ms after the send that was due at 1 ms: the points 1 to 7 have passed, 8 is sent.
    const Sent sent = sendAt(schedule, start + 8400us);
    EXPECT_EQ(sent.datagrams, std::vector<std::string>{"aaaa"});
    EXPECT_EQ(sent.skipped, 7U);
    EXPECT_EQ(sent.lateness, 7400us);
    EXPECT_EQ(schedule.prepare(), start + 9ms); // still on the grid
    sendAt(schedule, start + 9ms);
    EXPECT_EQ(firstDatagram(schedule), "aaaabbbb"); // the slow frame missed nothing
}

TEST(PeriodSchedule, LatenessBelowThePeriodSkipsNothing)
{
    PeriodSchedule schedule;
    add(schedule, start, frame(0, 2));
    EXPECT_EQ(sendAt(schedule, start + 1999us).skipped, 0U);
    EXPECT_EQ(schedule.prepare(), start + 2ms);
}

TEST(PeriodSchedule, SameKeyTakesThePlaceAndStartsAnew)
{
    PeriodSchedule schedule;
    add(schedule, start, frame(1, 10));
    sendAt(schedule, start);
    SendFrame other = frame(1, 20, 3);
    other.bytes = {'x'};
    add(schedule, start + 1ms, std::move(other));
    EXPECT_EQ(schedule.frameCount(), 1U);
    EXPECT_EQ(schedule.prepare(), start + 4ms);
    EXPECT_EQ(firstDatagram(schedule), "x");
    EXPECT_EQ(schedule.prepare(), start + 24ms);
}

TEST(PeriodSchedule, LaterOfTwoFramesWithOneKeyInAListCounts)
{
    PeriodSchedule schedule;
    SendFrame second = frame(1, 10);
    second.bytes = {'z'};
    add(schedule, start, frame(1, 10), std::move(second));
    EXPECT_EQ(firstDatagram(schedule), "z");
}

TEST(PeriodSchedule, UpdateReachesABatchThatStandsReady)
{
    PeriodSchedule schedule;
    add(schedule, start, frame(0, 5), frame(1, 5));
    EXPECT_EQ(schedule.prepare(), start);
    EXPECT_TRUE(schedule.update(0, {'n', 'e', 'w'}));
    EXPECT_FALSE(schedule.update(9, {'n', 'e', 'w'}));
    EXPECT_EQ(firstDatagram(schedule), "newbbbb");
    EXPECT_EQ(schedule.prepare(), start + 5ms);
}

TEST(PeriodSchedule, RemoveReachesABatchThatStandsReady)
{
    PeriodSchedule schedule;
    add(schedule, start, frame(0, 5), frame(1, 5));
    schedule.prepare();
    EXPECT_TRUE(schedule.remove(0));
    EXPECT_FALSE(schedule.remove(0));
    EXPECT_EQ(firstDatagram(schedule), "bbbb");
    EXPECT_TRUE(schedule.remove(1));
    EXPECT_EQ(schedule.prepare(), never);
}

TEST(PeriodSchedule, EarlierFrameGoesBeforeABatchThatStandsReady)
{
    PeriodSchedule schedule;
    add(schedule, start, frame(0, 5, 100));
    EXPECT_EQ(schedule.prepare(), start + 100ms);
    add(schedule, start, frame(1, 5, 10));
    EXPECT_EQ(schedule.prepare(), start + 10ms);
    EXPECT_EQ(firstDatagram(schedule), "bbbb");
}

TEST(PeriodSchedule, ChangesWhileABatchIsBeingSentLeaveItAlone)
{
    PeriodSchedule schedule;
    add(schedule, start, frame(0, 5), frame(1, 5), frame(2, 5));
    schedule.prepare();
    const auto batch = schedule.begin(start);
    const auto bytes = [&] { return std::string(batch.datagrams[0].bytes.begin(), batch.datagrams[0].bytes.end()); };
    EXPECT_TRUE(schedule.isSending());
    EXPECT_TRUE(schedule.remove(0));
    EXPECT_TRUE(schedule.update(1, {'n'}));
    add(schedule, start + 1ms, frame(2, 7), frame(3, 7)); // 2 takes its own place
    EXPECT_EQ(bytes(), "aaaabbbbcccc");
    schedule.finish();
    EXPECT_FALSE(schedule.isSending());
    EXPECT_EQ(schedule.prepare(), start + 1ms);
    EXPECT_EQ(firstDatagram(schedule), "ccccdddd");
    EXPECT_EQ(firstDatagram(schedule), "n"); // at 5 ms
    EXPECT_EQ(schedule.prepare(), start + 8ms);
    EXPECT_EQ(schedule.frameCount(), 3U);
}

TEST(PeriodSchedule, LongestPeriodAndDelayDoNotOverflow)
{
    PeriodSchedule schedule;
    add(schedule, start, frame(0, 0xFFFFFFFF, 0xFFFFFFFF));
    const auto longest = std::chrono::milliseconds(0xFFFFFFFFLL);
    EXPECT_EQ(schedule.prepare(), start + longest);
    sendAt(schedule, start + longest);
    EXPECT_EQ(schedule.prepare(), start + 2 * longest);
}

TEST(PeriodSchedule, RemoveIfTakesOutAllThatMatch)
{
    PeriodSchedule schedule;
    for (std::uint64_t key = 0; key < 100; ++key)
        add(schedule, start, frame(key, 1 + static_cast<std::uint32_t>(key)));
    EXPECT_EQ(schedule.removeIf([](std::uint64_t key) { return key % 2 == 0; }), 50U);
    EXPECT_EQ(schedule.frameCount(), 50U);
    EXPECT_EQ(sendAt(schedule, start).counts, std::vector<int>{50});
}
