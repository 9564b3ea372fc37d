// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/HeartbeatManager.h"

#include "tests/common/ManualClock.h"
#include "tests/support/WaitFor.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

using Common::HeartbeatManager;
using namespace std::chrono_literals;

namespace {

/// Counts the calls of a heartbeat that lives by a clock which the test moves.
class Heartbeat : public testing::Test
{
protected:
    std::unique_ptr<HeartbeatManager> make(unsigned int intervalMs)
    {
        auto heartbeat = std::make_unique<HeartbeatManager>(intervalMs, "test-heartbeat", clock);
        heartbeat->setCallback([this] { ++calls; });
        return heartbeat;
    }

    const std::shared_ptr<tztest::ManualClock> clock = std::make_shared<tztest::ManualClock>();
    std::atomic<int> calls{0};
};

} // namespace

TEST_F(Heartbeat, FiresAtEveryWakeUpWithoutIdleTime)
{
    const auto heartbeat = make(10);
    EXPECT_FALSE(heartbeat->isRunning());
    ASSERT_TRUE(heartbeat->start(0));
    EXPECT_TRUE(heartbeat->isRunning());
    ASSERT_TRUE(clock->advance(9ms));
    EXPECT_EQ(calls, 0); // never before its time, the first one interval after the start
    ASSERT_TRUE(clock->advance(1ms));
    EXPECT_EQ(calls, 1);
    for (int wakeUp = 2; wakeUp <= 20; ++wakeUp) {
        heartbeat->updateTimestamp(); // means nothing without an idle time
        ASSERT_TRUE(clock->advance(10ms));
        EXPECT_EQ(calls, wakeUp);
    }
    heartbeat->stop();
    EXPECT_FALSE(heartbeat->isRunning());
}

TEST_F(Heartbeat, ActivityHoldsTheIdleCallbackBack)
{
    const auto heartbeat = make(5);
    ASSERT_TRUE(heartbeat->start(20)); // counts as an activity
    for (int round = 0; round < 100; ++round) {
        ASSERT_TRUE(clock->advance(5ms));
        ASSERT_TRUE(clock->advance(5ms));
        ASSERT_TRUE(clock->advance(5ms));
        heartbeat->updateTimestamp();
    }
    EXPECT_EQ(calls, 0);
}

TEST_F(Heartbeat, FiresOnceIdleForLongEnough)
{
    const auto heartbeat = make(5);
    heartbeat->setCallback([&] {
        ++calls;
        heartbeat->updateTimestamp(); // as a sent keep-alive does
    });
    ASSERT_TRUE(heartbeat->start(40));
    for (int round = 1; round <= 3; ++round) {
        for (int wakeUp = 1; wakeUp < 8; ++wakeUp)
            ASSERT_TRUE(clock->advance(5ms));
        EXPECT_EQ(calls, round - 1);
        ASSERT_TRUE(clock->advance(5ms));
        EXPECT_EQ(calls, round);
    }
}

TEST_F(Heartbeat, StaysDueAtEveryWakeUpUntilThereIsActivity)
{
    const auto heartbeat = make(5);
    ASSERT_TRUE(heartbeat->start(7)); // less than a multiple: due at the wake-up that follows
    ASSERT_TRUE(clock->advance(5ms));
    EXPECT_EQ(calls, 0);
    ASSERT_TRUE(clock->advance(5ms));
    ASSERT_TRUE(clock->advance(5ms));
    EXPECT_EQ(calls, 2);
    heartbeat->updateTimestamp();
    ASSERT_TRUE(clock->advance(5ms));
    EXPECT_EQ(calls, 2);
}

TEST_F(Heartbeat, StartFailsWhileRunning)
{
    HeartbeatManager heartbeat(5);
    ASSERT_TRUE(heartbeat.start(0)); // also without a callback
    EXPECT_FALSE(heartbeat.start(0));
    heartbeat.stop();
}

TEST_F(Heartbeat, StopWakesALongIntervalAndNoCallbackFollows)
{
    HeartbeatManager heartbeat(3'600'000);
    heartbeat.setCallback([&] { ++calls; });
    ASSERT_TRUE(heartbeat.start(0));
    heartbeat.stop();
    heartbeat.stop();
    EXPECT_EQ(calls, 0);
}

TEST_F(Heartbeat, StopWaitsForTheCallback)
{
    std::atomic<bool> inside{false};
    std::atomic<bool> left{false};
    const auto heartbeat = make(1);
    heartbeat->setCallback([&] {
        inside = true;
        EXPECT_TRUE(tztest::waitBlocking([&] { return !heartbeat->isRunning(); })); // stop() is under way
        for (int i = 0; i < 100; ++i)
            std::this_thread::yield(); // a stop() that does not wait would be over by now
        left = true;
    });
    ASSERT_TRUE(heartbeat->start(0));
    clock->move(1ms);
    ASSERT_TRUE(tztest::waitFor([&] { return inside.load(); }));
    heartbeat->stop();
    EXPECT_TRUE(left);
}

TEST_F(Heartbeat, CanBeStartedAgainOnAGridOfItsOwn)
{
    const auto heartbeat = make(10);
    for (int round = 1; round <= 20; ++round) {
        ASSERT_TRUE(heartbeat->start(0));
        ASSERT_TRUE(clock->advance(10ms));
        EXPECT_EQ(calls, round);
        ASSERT_TRUE(clock->advance(7ms)); // the next grid begins here
        heartbeat->stop();
    }
}

TEST_F(Heartbeat, CallbackMayStopAndAnotherThreadStartAgain)
{
    const auto heartbeat = make(1);
    heartbeat->setCallback([&] {
        heartbeat->stop();
        EXPECT_FALSE(heartbeat->start(0)); // its thread has not ended yet
        ++calls;
    });
    for (int round = 1; round <= 10; ++round) {
        ASSERT_TRUE(heartbeat->start(0));
        clock->move(1ms);
        ASSERT_TRUE(tztest::waitFor([&] { return calls == round; }));
        EXPECT_FALSE(heartbeat->isRunning());
    }
}

TEST_F(Heartbeat, StartAndStopFromManyThreads)
{
    HeartbeatManager heartbeat(1);
    heartbeat.setCallback([&] { heartbeat.updateTimestamp(); });
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 50; ++round) {
                (void)heartbeat.start(0);
                heartbeat.stop();
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_FALSE(heartbeat.isRunning());
}

TEST_F(Heartbeat, SlowCallbackSkipsWakeUpsInsteadOfPilingThemUp)
{
    std::vector<std::chrono::milliseconds> times; // of the thread, until it is stopped
    const auto heartbeat = make(5);
    heartbeat->setCallback([&] {
        times.push_back(clock->elapsed());
        if (times.size() == 1)
            clock->move(42ms);
    });
    ASSERT_TRUE(heartbeat->start(0));
    ASSERT_TRUE(clock->advance(5ms)); // the first call ends at 47 ms: the wake-ups in between are gone
    ASSERT_TRUE(clock->advance(3ms));
    ASSERT_TRUE(clock->advance(5ms));
    heartbeat->stop();
    EXPECT_EQ(times, (std::vector{5ms, 50ms, 55ms}));
}

TEST_F(Heartbeat, IntervalOfZeroCountsAsOneMillisecond)
{
    const auto heartbeat = make(0);
    ASSERT_TRUE(heartbeat->start(0));
    for (int wakeUp = 1; wakeUp <= 10; ++wakeUp) {
        ASSERT_TRUE(clock->advance(1ms));
        EXPECT_EQ(calls, wakeUp);
    }
}

TEST_F(Heartbeat, CallbackMayBeReplacedWhileRunning)
{
    int second = 0;
    const auto heartbeat = make(1);
    ASSERT_TRUE(heartbeat->start(0));
    ASSERT_TRUE(clock->advance(1ms));
    heartbeat->setCallback([&] { ++second; });
    ASSERT_TRUE(clock->advance(1ms));
    ASSERT_TRUE(clock->advance(1ms));
    heartbeat->setCallback(nullptr);
    ASSERT_TRUE(clock->advance(1ms));
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(second, 2);
}

TEST_F(Heartbeat, LivesByTheSteadyClockUnlessToldOtherwise)
{
    HeartbeatManager heartbeat(10);
    heartbeat.setCallback([&] { ++calls; });
    const auto started = std::chrono::steady_clock::now();
    ASSERT_TRUE(heartbeat.start(0));
    ASSERT_TRUE(tztest::waitFor([&] { return calls >= 5; }));
    EXPECT_GE(std::chrono::steady_clock::now() - started, 50ms); // never before its time
}
