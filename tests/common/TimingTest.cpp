// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/PrecisionTimer.h"
#include "common/WorkerThread.h"
#include "common/platform/SteadySleeper.h"
#include "tests/support/WaitFor.h"

#include <gtest/gtest.h>

#include <atomic>
#include <pthread.h>
#include <thread>

using Common::PrecisionTimer;
using Common::WorkerThread;
using Common::platform::SteadySleeper;
using namespace std::chrono_literals;

namespace {
using Clock = SteadySleeper::Clock;
} // namespace

TEST(SteadySleeper, SleepsToTheDeadlineAndNeverLess)
{
    SteadySleeper sleeper;
    for (int i = 0; i < 50; ++i) {
        const auto deadline = Clock::now() + 700us;
        EXPECT_TRUE(sleeper.sleepUntil(sleeper.ticket(), deadline));
        EXPECT_GE(Clock::now(), deadline);
    }
}

TEST(SteadySleeper, PastDeadlineReturnsAtOnce)
{
    SteadySleeper sleeper;
    EXPECT_TRUE(sleeper.sleepUntil(sleeper.ticket(), Clock::now() - 1h));
    EXPECT_TRUE(sleeper.sleepUntil(sleeper.ticket(), Clock::time_point{}));
}

TEST(SteadySleeper, WakeUpAfterTheTicketIsNotLost)
{
    SteadySleeper sleeper;
    const auto ticket = sleeper.ticket();
    sleeper.wake();
    EXPECT_FALSE(sleeper.sleepUntil(ticket, SteadySleeper::never));
    EXPECT_FALSE(sleeper.sleepUntil(ticket, Clock::now() - 1s)); // an old ticket stays used
}

TEST(SteadySleeper, WakeEndsASleepThatWouldNeverEnd)
{
    SteadySleeper sleeper;
    std::atomic<bool> asleep{false};
    std::thread sleeping([&] {
        const auto ticket = sleeper.ticket();
        asleep = true;
        EXPECT_FALSE(sleeper.sleepUntil(ticket, SteadySleeper::never));
    });
    ASSERT_TRUE(tztest::waitFor([&] { return asleep.load(); }));
    sleeper.wake();
    sleeping.join();
}

TEST(PrecisionTimer, WaitsForTheTimeTold)
{
    auto &timer = PrecisionTimer::getInstance();
    for (const unsigned long long ms : {1ULL, 5ULL, 20ULL}) {
        const auto started = Clock::now();
        timer.waitFor(ms);
        EXPECT_GE(Clock::now() - started, std::chrono::milliseconds(ms));
    }
}

TEST(PrecisionTimer, ZeroReturnsAtOnce)
{
    for (int i = 0; i < 1000; ++i)
        PrecisionTimer::getInstance().waitFor(0);
}

TEST(PrecisionTimer, TickCountsMilliseconds)
{
    const auto &timer = PrecisionTimer::getInstance();
    const auto before = timer.getTickCount();
    PrecisionTimer::getInstance().waitFor(20);
    const auto after = timer.getTickCount();
    EXPECT_GE(after - before, 20U);
    EXPECT_EQ(&timer, &PrecisionTimer::getInstance());
}

TEST(WorkerThread, RunsItsBodyUnderItsName)
{
    WorkerThread worker;
    std::string name;
    ASSERT_TRUE(worker.start("tz-named", [&] {
        EXPECT_TRUE(worker.isCurrent());
        char text[16] = {};
        pthread_getname_np(pthread_self(), text, sizeof(text));
        name = text;
    }));
    EXPECT_FALSE(worker.isCurrent());
    worker.join();
    worker.join();
    EXPECT_EQ(name, "tz-named");
}

TEST(WorkerThread, JoinAndStartFromItsOwnBodyDoNothing)
{
    WorkerThread worker;
    bool started = true;
    ASSERT_TRUE(worker.start("tz-own", [&] {
        worker.join();
        started = worker.start("tz-second", [] {});
    }));
    worker.join();
    EXPECT_FALSE(started);
}

TEST(WorkerThread, StartJoinsTheRunBefore)
{
    WorkerThread worker;
    int runs = 0; // no atomic: each run must see the one before
    for (int i = 0; i < 20; ++i)
        ASSERT_TRUE(worker.start("tz-again", [&] { ++runs; }));
    worker.join();
    EXPECT_EQ(runs, 20);
}

TEST(WorkerThread, JoinBeforeAnyStartReturns)
{
    WorkerThread worker;
    worker.join();
    EXPECT_FALSE(worker.isCurrent());
}
