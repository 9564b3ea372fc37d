// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/SequenceSender.h"

#include "common/EmergencyStop.h"
#include "tests/support/WaitFor.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using Common::SendFrame;
using Common::SequenceSender;
using namespace std::chrono_literals;

namespace {

using Clock = std::chrono::steady_clock;

SendFrame frame(char letter, std::uint32_t delay = 0, std::uint32_t period = 50)
{
    SendFrame made;
    made.key = static_cast<unsigned char>(letter);
    made.bytes = {letter};
    made.delay = delay;
    made.period = period;
    return made;
}

class SequenceSenderTest : public testing::Test
{
protected:
    SequenceSenderTest()
    {
        sender.setSendCallback([this](const std::vector<char> &bytes, int frameCount) {
            const std::lock_guard lock(mutex);
            EXPECT_EQ(frameCount, 1);
            sent.append(bytes.begin(), bytes.end());
            times.push_back(Clock::now());
            return result.load();
        });
        sender.setCompletionCallback([this](int code) {
            completedCode = code;
            ++completions;
        });
    }
    ~SequenceSenderTest() override { sender.stop(); }

    std::string text() const
    {
        const std::lock_guard lock(mutex);
        return sent;
    }
    bool waitForEnd(int count = 1)
    {
        return tztest::waitFor([&] { return completions >= count; });
    }

    mutable std::mutex mutex; // protects sent and times
    std::string sent;
    std::vector<Clock::time_point> times;
    std::atomic<int> result{0};
    std::atomic<int> completions{0};
    std::atomic<int> completedCode{1};
    SequenceSender sender;
};

} // namespace

TEST_F(SequenceSenderTest, SendsTheListOnceInItsOrder)
{
    ASSERT_EQ(sender.start({frame('a'), frame('b'), frame('a'), frame('c')}), SequenceSender::Ok);
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(text(), "abac");
    EXPECT_EQ(completedCode, 0);
}

TEST_F(SequenceSenderTest, SendsTheListAsOftenAsTold)
{
    sender.setConfig(false, 4, 0);
    ASSERT_EQ(sender.start({frame('a'), frame('b', 1)}), SequenceSender::Ok);
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(text(), "abababab");
}

TEST_F(SequenceSenderTest, ZeroTimesCountsAsOnce)
{
    sender.setConfig(false, 0, 0);
    ASSERT_EQ(sender.start({frame('a')}), SequenceSender::Ok);
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(text(), "a");
}

TEST_F(SequenceSenderTest, DelayLiesBeforeItsFrame)
{
    const auto started = Clock::now();
    ASSERT_EQ(sender.start({frame('a', 20), frame('b', 0), frame('c', 30)}), SequenceSender::Ok);
    ASSERT_TRUE(waitForEnd());
    EXPECT_GE(times.at(0) - started, 20ms);
    EXPECT_GE(times.at(2) - started, 50ms);
    EXPECT_LT(times.at(1) - times.at(0), times.at(2) - times.at(1));
}

TEST_F(SequenceSenderTest, IntervalLiesBetweenThePasses)
{
    sender.setConfig(false, 3, 20);
    const auto started = Clock::now();
    ASSERT_EQ(sender.start({frame('a'), frame('b')}), SequenceSender::Ok);
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(text(), "ababab");
    EXPECT_GE(times.at(4) - started, 40ms);
}

TEST_F(SequenceSenderTest, ListWithoutAnyDelayTakesAMillisecondAPass)
{
    sender.setConfig(false, 20, 0);
    const auto started = Clock::now();
    ASSERT_EQ(sender.start({frame('a'), frame('b')}), SequenceSender::Ok);
    ASSERT_TRUE(waitForEnd());
    EXPECT_GE(Clock::now() - started, 19ms);
    EXPECT_EQ(text().size(), 40U);
}

TEST_F(SequenceSenderTest, CyclicRunsThroughSlotsOfThePeriodUntilStopped)
{
    sender.setConfig(true, 1, 0); // the number does not count in a loop
    const auto started = Clock::now();
    ASSERT_EQ(sender.start({frame('a', 5000, 4), frame('b', 5000, 6)}), SequenceSender::Ok);
    ASSERT_TRUE(tztest::waitFor([&] { return text().size() >= 21; }));
    EXPECT_EQ(completions, 0);
    sender.stop();
    EXPECT_EQ(completions, 1);
    EXPECT_EQ(completedCode, 0);
    EXPECT_EQ(text().substr(0, 21), "ababababababababababa");
    EXPECT_GE(times.at(1) - started, 4ms);
    EXPECT_GE(times.at(20) - started, 100ms); // ten passes of 10 ms
}

TEST_F(SequenceSenderTest, CyclicSlotWithoutPeriodTakesTheDelay)
{
    sender.setConfig(true, 1, 0);
    const auto started = Clock::now();
    ASSERT_EQ(sender.start({frame('a', 10, 0)}), SequenceSender::Ok);
    ASSERT_TRUE(tztest::waitFor([&] { return text().size() >= 3; }));
    sender.stop();
    EXPECT_GE(times.at(2) - started, 20ms);
}

TEST_F(SequenceSenderTest, StartDuringARunIsRefusedAndLeavesItAlone)
{
    ASSERT_EQ(sender.start({frame('a'), frame('b', 60'000)}), SequenceSender::Ok);
    EXPECT_EQ(sender.start({frame('x')}), SequenceSender::AlreadyRunning);
    ASSERT_TRUE(tztest::waitFor([&] { return text() == "a"; }));
    EXPECT_EQ(completions, 0);
}

TEST_F(SequenceSenderTest, BadListsAreRefusedWithoutACompletion)
{
    EXPECT_EQ(sender.start(std::vector<SendFrame>{}), SequenceSender::InvalidFrame);
    SendFrame empty = frame('a');
    empty.bytes.clear();
    EXPECT_EQ(sender.start({frame('b'), empty}), SequenceSender::InvalidFrame);
    SequenceSender silent;
    EXPECT_EQ(silent.start({frame('a')}), SequenceSender::NoCallback);
    EXPECT_EQ(completions, 0);
    EXPECT_EQ(text(), "");
}

TEST_F(SequenceSenderTest, FailedSendEndsTheRunWithItsCode)
{
    sender.setConfig(true, 1, 0);
    result = -103;
    ASSERT_EQ(sender.start({frame('a', 0, 1), frame('b', 0, 1)}), SequenceSender::Ok);
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(completedCode, -103);
    EXPECT_EQ(text(), "a");
}

TEST_F(SequenceSenderTest, PositiveSendResultIsNoFailure)
{
    result = 12;
    ASSERT_EQ(sender.start({frame('a'), frame('b')}), SequenceSender::Ok);
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(completedCode, 0);
    EXPECT_EQ(text(), "ab");
}

TEST_F(SequenceSenderTest, StopWakesALongDelayAndCompletesOnce)
{
    ASSERT_EQ(sender.start({frame('a', 3'600'000)}), SequenceSender::Ok);
    sender.stop();
    EXPECT_EQ(completions, 1);
    EXPECT_EQ(completedCode, 0);
    sender.stop();
    EXPECT_EQ(completions, 1);
    EXPECT_EQ(text(), "");
}

TEST_F(SequenceSenderTest, StopFromTheSendCallbackEndsTheRun)
{
    sender.setConfig(true, 1, 0);
    std::atomic<int> calls{0};
    sender.setSendCallback([&](const std::vector<char> &, int) {
        if (++calls == 3)
            sender.stop();
        return 0;
    });
    ASSERT_EQ(sender.start({frame('a', 0, 1)}), SequenceSender::Ok);
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(calls, 3);
}

TEST_F(SequenceSenderTest, StopFromTheCompletionCallbackIsHarmless)
{
    sender.setCompletionCallback([&](int) {
        sender.stop();
        EXPECT_EQ(sender.start({frame('b')}), SequenceSender::AlreadyRunning);
        ++completions;
    });
    ASSERT_EQ(sender.start({frame('a')}), SequenceSender::Ok);
    ASSERT_TRUE(waitForEnd());
    sender.stop();
    EXPECT_EQ(text(), "a");
}

TEST_F(SequenceSenderTest, StopFromManyThreadsCompletesOnce)
{
    for (int round = 1; round <= 20; ++round) {
        ASSERT_EQ(sender.start({frame('a'), frame('b', 60'000)}), SequenceSender::Ok);
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i)
            threads.emplace_back([this] { sender.stop(); });
        for (std::thread &thread : threads)
            thread.join();
        EXPECT_EQ(completions, round);
    }
}

TEST_F(SequenceSenderTest, CanBeStartedAgainAfterItsEnd)
{
    for (int round = 1; round <= 50; ++round) {
        // From the moment of the completion on the next start is only a matter of the callback's return.
        int started = SequenceSender::AlreadyRunning;
        ASSERT_TRUE(tztest::waitFor([&] { return (started = sender.start({frame('a')})) == SequenceSender::Ok; }));
        ASSERT_TRUE(waitForEnd(round));
    }
    EXPECT_EQ(text(), std::string(50, 'a'));
    EXPECT_EQ(completions, 50);
}

TEST_F(SequenceSenderTest, UpdateDataReplacesAllEntriesOfTheKey)
{
    sender.setConfig(true, 1, 0);
    ASSERT_EQ(sender.start({frame('a', 0, 1), frame('b', 0, 1), frame('a', 0, 1)}), SequenceSender::Ok);
    ASSERT_TRUE(tztest::waitFor([&] { return text().size() > 3; }));
    EXPECT_EQ(sender.updateData('a', {'x'}), 0);
    EXPECT_TRUE(tztest::waitFor([&] { return text().find("xbxxbx") != std::string::npos; }));
    EXPECT_EQ(sender.updateData('z', {'x'}), -1);
    EXPECT_EQ(sender.updateData('a', {}), -1);
}

TEST_F(SequenceSenderTest, UpdateDataAfterCompletionReturnsMinusOne)
{
    EXPECT_EQ(sender.updateData('a', {'x'}), -1); // before the first start
    ASSERT_EQ(sender.start({frame('a')}), SequenceSender::Ok);
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(sender.updateData('a', {'x'}), -1);
}

TEST_F(SequenceSenderTest, StallMovesTheRestInsteadOfABurst)
{
    std::atomic<int> calls{0};
    std::vector<Clock::time_point> sendTimes(4);
    sender.setSendCallback([&](const std::vector<char> &, int) {
        const int call = calls++;
        if (call < 4)
            sendTimes[static_cast<std::size_t>(call)] = Clock::now();
        if (call == 0)
            std::this_thread::sleep_for(60ms);
        return 0;
    });
    ASSERT_EQ(sender.start({frame('a'), frame('b', 10), frame('c', 10), frame('d', 10)}), SequenceSender::Ok);
    ASSERT_TRUE(waitForEnd());
    sender.stop();
    EXPECT_GE(sendTimes[3] - sendTimes[1], 10ms); // at most one of the two gaps may be short
}

TEST_F(SequenceSenderTest, EmergencyStopEndsTheRun)
{
    sender.setConfig(true, 1, 0);
    ASSERT_EQ(sender.start({frame('a', 0, 1)}), SequenceSender::Ok);
    ASSERT_TRUE(tztest::waitFor([&] { return !text().empty(); }));
    Common::EmergencyStop::fire();
    EXPECT_TRUE(waitForEnd());
    Common::EmergencyStop::reset();
    EXPECT_EQ(completedCode, 0);
}

TEST_F(SequenceSenderTest, MayBeDestroyedByItsOwnCompletionCallback)
{
    for (int round = 0; round < 300; ++round) {
        auto own = std::make_unique<SequenceSender>();
        std::atomic<bool> destroyed{false};
        own->setSendCallback([](const std::vector<char> &, int) { return 0; });
        own->setCompletionCallback([&](int) {
            own.reset();
            destroyed = true;
        });
        ASSERT_EQ(own->start({frame('a')}), SequenceSender::Ok); // may be on its way back when the run is over
        ASSERT_TRUE(tztest::waitFor([&] { return destroyed.load(); }));
    }
}

TEST_F(SequenceSenderTest, DestructorStopsTheRun)
{
    std::atomic<int> ends{0};
    {
        SequenceSender other;
        other.setSendCallback([](const std::vector<char> &, int) { return 0; });
        other.setCompletionCallback([&](int) { ++ends; });
        ASSERT_EQ(other.start({frame('a', 3'600'000)}), SequenceSender::Ok);
    }
    EXPECT_EQ(ends, 1);
}
