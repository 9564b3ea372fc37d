// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/HeartbeatManager.h"

#include "tests/support/WaitFor.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

using Common::HeartbeatManager;
using namespace std::chrono_literals;

namespace {
using Clock = std::chrono::steady_clock;
} // namespace

TEST(HeartbeatManager, FiresAtEveryWakeUpWithoutIdleTime)
{
    HeartbeatManager heartbeat(10);
    std::atomic<int> calls{0};
    heartbeat.setCallback([&] { ++calls; });
    EXPECT_FALSE(heartbeat.isRunning());
    const auto started = Clock::now();
    ASSERT_TRUE(heartbeat.start(0));
    EXPECT_TRUE(heartbeat.isRunning());
    ASSERT_TRUE(tztest::waitFor([&] {
        heartbeat.updateTimestamp(); // means nothing without an idle time
        return calls >= 20;
    }));
    EXPECT_GE(Clock::now() - started, 200ms); // never before its time, the first one interval after the start
    heartbeat.stop();
    EXPECT_FALSE(heartbeat.isRunning());
}

TEST(HeartbeatManager, ActivityHoldsTheIdleCallbackBack)
{
    HeartbeatManager heartbeat(5);
    std::atomic<int> calls{0};
    heartbeat.setCallback([&] { ++calls; });
    ASSERT_TRUE(heartbeat.start(60'000));
    std::this_thread::sleep_for(50ms); // ten wake-ups, all within the idle time that began with start()
    EXPECT_EQ(calls, 0);
    heartbeat.stop();
}

TEST(HeartbeatManager, FiresOnceIdleForLongEnough)
{
    HeartbeatManager heartbeat(5);
    std::atomic<int> calls{0};
    heartbeat.setCallback([&] {
        ++calls;
        heartbeat.updateTimestamp(); // as a sent keep-alive does
    });
    const auto started = Clock::now();
    ASSERT_TRUE(heartbeat.start(40));
    ASSERT_TRUE(tztest::waitFor([&] { return calls >= 3; }));
    EXPECT_GE(Clock::now() - started, 120ms);
    heartbeat.stop();
}

TEST(HeartbeatManager, StartFailsWhileRunning)
{
    HeartbeatManager heartbeat(5);
    ASSERT_TRUE(heartbeat.start(0)); // also without a callback
    EXPECT_FALSE(heartbeat.start(0));
    heartbeat.stop();
}

TEST(HeartbeatManager, StopWakesALongIntervalAndNoCallbackFollows)
{
    HeartbeatManager heartbeat(3'600'000);
    std::atomic<int> calls{0};
    heartbeat.setCallback([&] { ++calls; });
    ASSERT_TRUE(heartbeat.start(0));
    heartbeat.stop();
    heartbeat.stop();
    EXPECT_EQ(calls, 0);
}

TEST(HeartbeatManager, StopWaitsForTheCallback)
{
    HeartbeatManager heartbeat(1);
    std::atomic<bool> inside{false};
    heartbeat.setCallback([&] {
        inside = true;
        inside.notify_all();
        std::this_thread::sleep_for(20ms);
        inside = false;
    });
    ASSERT_TRUE(heartbeat.start(0));
    inside.wait(false);
    heartbeat.stop();
    EXPECT_FALSE(inside);
}

TEST(HeartbeatManager, CanBeStartedAgain)
{
    HeartbeatManager heartbeat(1);
    std::atomic<int> calls{0};
    heartbeat.setCallback([&] { ++calls; });
    for (int round = 0; round < 20; ++round) {
        const int before = calls;
        ASSERT_TRUE(heartbeat.start(0));
        ASSERT_TRUE(tztest::waitFor([&] { return calls > before; }));
        heartbeat.stop();
    }
}

TEST(HeartbeatManager, CallbackMayStopAndAnotherThreadStartAgain)
{
    HeartbeatManager heartbeat(1);
    std::atomic<int> calls{0};
    heartbeat.setCallback([&] {
        heartbeat.stop();
        EXPECT_FALSE(heartbeat.start(0)); // its thread has not ended yet
        ++calls;
    });
    for (int round = 1; round <= 10; ++round) {
        ASSERT_TRUE(heartbeat.start(0));
        ASSERT_TRUE(tztest::waitFor([&] { return calls == round; }));
        EXPECT_FALSE(heartbeat.isRunning());
    }
}

TEST(HeartbeatManager, StartAndStopFromManyThreads)
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

TEST(HeartbeatManager, SlowCallbackSkipsWakeUpsInsteadOfPilingThemUp)
{
    HeartbeatManager heartbeat(5);
    std::atomic<int> calls{0};
    std::vector<Clock::time_point> times(3);
    heartbeat.setCallback([&] {
        const int call = calls++;
        if (call < 3)
            times[static_cast<std::size_t>(call)] = Clock::now();
        if (call == 0)
            std::this_thread::sleep_for(42ms);
    });
    const auto started = Clock::now();
    ASSERT_TRUE(heartbeat.start(0));
    ASSERT_TRUE(tztest::waitFor([&] { return calls >= 3; }));
    heartbeat.stop();
    // The first call ended after 47 ms at the earliest: the wake-ups in between are gone, 50 and 55 ms follow.
    EXPECT_GE(times[1] - started, 50ms);
    EXPECT_GE(times[2] - started, 55ms);
}

TEST(HeartbeatManager, IntervalOfZeroCountsAsOneMillisecond)
{
    HeartbeatManager heartbeat(0);
    std::atomic<int> calls{0};
    heartbeat.setCallback([&] { ++calls; });
    const auto started = Clock::now();
    ASSERT_TRUE(heartbeat.start(0));
    ASSERT_TRUE(tztest::waitFor([&] { return calls >= 10; }));
    EXPECT_GE(Clock::now() - started, 10ms);
    heartbeat.stop();
}

TEST(HeartbeatManager, CallbackMayBeReplacedWhileRunning)
{
    HeartbeatManager heartbeat(1);
    std::atomic<int> first{0};
    std::atomic<int> second{0};
    heartbeat.setCallback([&] { ++first; });
    ASSERT_TRUE(heartbeat.start(0));
    ASSERT_TRUE(tztest::waitFor([&] { return first > 0; }));
    heartbeat.setCallback([&] { ++second; });
    EXPECT_TRUE(tztest::waitFor([&] { return second > 2; }));
    heartbeat.setCallback(nullptr);
    heartbeat.stop();
}
