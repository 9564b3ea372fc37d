// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/PeriodSender.h"

#include "common/EmergencyStop.h"
#include "common/HeartbeatManager.h"
#include "common/Log.h"
#include "common/Utils.h"
#include "tests/common/FrameCounter.h"
#include "tests/support/LogCapture.h"
#include "tests/support/WaitFor.h"

#include <gtest/gtest.h>

#include <atomic>
#include <sched.h>
#include <string>
#include <thread>

using Common::PeriodSender;
using Common::SendFrame;
using Common::Utils;
using tztest::FrameCounter;
using namespace std::chrono_literals;

namespace {

using Clock = std::chrono::steady_clock;

// Frames of the tests are single letters, so that a datagram tells its frames.
SendFrame frame(char letter, std::uint32_t period, std::uint32_t delay = 0, unsigned short kind = 1,
                unsigned short channel = 0)
{
    SendFrame made;
    made.key = Utils::makeUtilsKey(kind, channel, static_cast<unsigned char>(letter));
    made.bytes = {letter};
    made.period = period;
    made.delay = delay;
    return made;
}

std::vector<SendFrame> frames(std::initializer_list<SendFrame> list)
{
    return {list};
}

class PeriodSenderTest : public testing::Test
{
protected:
    PeriodSenderTest() { sender.setSendCallback(receiver.callback()); }

    // What must not go on is given the time in which it would: another timer of 1 ms fires many times.
    static void letTimersFire()
    {
        std::atomic<int> calls{0};
        Common::HeartbeatManager other(1);
        other.setCallback([&] { ++calls; });
        ASSERT_TRUE(other.start(0));
        ASSERT_TRUE(tztest::waitFor([&] { return calls >= 20; }));
    }
    void expectSilence(char letter)
    {
        const auto before = receiver.count(letter);
        letTimersFire();
        EXPECT_EQ(receiver.count(letter), before) << letter;
    }

    FrameCounter receiver;
    PeriodSender sender;
};

} // namespace

TEST_F(PeriodSenderTest, RepeatsAtItsPeriodWithoutDrift)
{
    constexpr auto period = 5ms;
    const auto started = Clock::now();
    const auto pointsUntil = [&](Clock::time_point moment) {
        return static_cast<std::uint64_t>((moment - started) / period) + 1;
    };
    const auto pointsMet = [&] {
        const auto statistics = sender.statistics();
        return statistics.frames + statistics.skippedFrames;
    };
    ASSERT_EQ(sender.addFrame(frame('a', 5)), PeriodSender::Ok);
    // Every point of the grid was sent or is told as skipped: nothing is lost in between. A thread that the machine
    // holds up meets its points later, and the last ones may be due at this very moment; what is lost never comes.
    EXPECT_TRUE(tztest::waitFor([&] {
        const auto now = Clock::now();
        return now - started > 2s && pointsMet() + 2 >= pointsUntil(now);
    }));
    sender.clear();
    EXPECT_EQ(receiver.count('a'), sender.statistics().frames);
    EXPECT_LE(pointsMet(), pointsUntil(Clock::now()));
    // No send comes before its point, however many went before.
    const auto times = receiver.times('a');
    for (std::size_t i = 0; i < times.size(); ++i)
        ASSERT_GE(times[i] - started, static_cast<int>(i) * period);
}

TEST_F(PeriodSenderTest, HoldsAPeriodOfOneMillisecondFor64Frames)
{
    std::vector<SendFrame> list;
    for (int i = 0; i < 64; ++i)
        list.push_back(frame(static_cast<char>('0' + i), 1));
    ASSERT_EQ(sender.addFrames(list), PeriodSender::Ok);
    ASSERT_TRUE(tztest::waitFor([&] { return receiver.count('0') >= 200; }));
    sender.clear();
    const auto statistics = sender.statistics();
    EXPECT_EQ(receiver.total(), statistics.frames);
    EXPECT_EQ(statistics.frames, statistics.datagrams * 64); // due together: together in one datagram
    EXPECT_EQ(statistics.skippedFrames % 64, 0U);
    EXPECT_TRUE(receiver.countsMatch());
    for (int i = 0; i < 64; ++i)
        EXPECT_EQ(receiver.count(static_cast<char>('0' + i)), receiver.count('0'));
}

TEST_F(PeriodSenderTest, DelayComesBeforeTheFirstSendOnly)
{
    const auto started = Clock::now();
    ASSERT_EQ(sender.addFrames(frames({frame('a', 10), frame('b', 10, 60)})), PeriodSender::Ok);
    ASSERT_TRUE(tztest::waitFor([&] { return receiver.count('b') >= 3; }));
    EXPECT_GE(receiver.times('b')[0] - started, 60ms);
    EXPECT_GE(receiver.times('b')[2] - started, 80ms);
    EXPECT_LT(receiver.times('a')[0], receiver.times('b')[0]);
}

TEST_F(PeriodSenderTest, PeriodOfZeroIsRefused)
{
    EXPECT_EQ(sender.addFrame(frame('a', 0)), PeriodSender::InvalidFrame);
    EXPECT_LT(static_cast<int>(PeriodSender::InvalidFrame), 0);
}

TEST_F(PeriodSenderTest, FrameWithoutBytesIsRefused)
{
    SendFrame empty = frame('a', 1);
    empty.bytes.clear();
    EXPECT_LT(sender.addFrame(std::move(empty)), 0);
}

TEST_F(PeriodSenderTest, EmptyListIsRefused)
{
    EXPECT_LT(sender.addFrames(std::vector<SendFrame>{}), 0);
}

TEST_F(PeriodSenderTest, OneBadFrameRefusesTheWholeList)
{
    EXPECT_LT(sender.addFrames(frames({frame('a', 1), frame('b', 0)})), 0);
    expectSilence('a');
    EXPECT_EQ(receiver.total(), 0U);
}

TEST_F(PeriodSenderTest, WithoutACallbackNothingIsTaken)
{
    PeriodSender silent;
    EXPECT_EQ(silent.addFrame(frame('a', 1)), PeriodSender::NoCallback);
}

TEST_F(PeriodSenderTest, UpdateDataReplacesTheBytesOfARunningFrame)
{
    ASSERT_EQ(sender.addFrame(frame('a', 2)), PeriodSender::Ok);
    ASSERT_TRUE(tztest::waitFor([&] { return receiver.count('a') > 0; }));
    EXPECT_TRUE(sender.updateData(frame('a', 2).key, {'b'}));
    ASSERT_TRUE(tztest::waitFor([&] { return receiver.count('b') > 2; }));
    expectSilence('a');
    EXPECT_FALSE(sender.updateData(frame('x', 2).key, {'b'}));
    EXPECT_FALSE(sender.updateData(frame('a', 2).key, {}));
}

TEST_F(PeriodSenderTest, SameKeyReplacesTheRunningFrame)
{
    ASSERT_EQ(sender.addFrame(frame('a', 1)), PeriodSender::Ok);
    SendFrame other = frame('a', 60'000);
    other.bytes = {'b'};
    ASSERT_EQ(sender.addFrame(std::move(other)), PeriodSender::Ok);
    ASSERT_TRUE(tztest::waitFor([&] { return receiver.count('b') == 1; }));
    expectSilence('a');
    EXPECT_EQ(receiver.count('b'), 1U);
}

TEST_F(PeriodSenderTest, RemoveFrameStopsThatOneAlone)
{
    ASSERT_EQ(sender.addFrames(frames({frame('a', 1), frame('b', 1)})), PeriodSender::Ok);
    ASSERT_TRUE(tztest::waitFor([&] { return receiver.count('a') > 2; }));
    EXPECT_TRUE(sender.removeFrame(frame('a', 1).key));
    expectSilence('a');
    const auto before = receiver.count('b');
    ASSERT_TRUE(tztest::waitFor([&] { return receiver.count('b') > before; }));
    EXPECT_FALSE(sender.removeFrame(frame('a', 1).key));
}

TEST_F(PeriodSenderTest, ClearByKindAndChannelLeavesTheOthers)
{
    const auto all =
        frames({frame('a', 1, 0, 1, 0), frame('b', 1, 0, 1, 1), frame('c', 1, 0, 5, 0), frame('d', 1, 0, 16, 0)});
    ASSERT_EQ(sender.addFrames(all), PeriodSender::Ok);
    ASSERT_TRUE(tztest::waitFor([&] { return receiver.count('d') > 0; }));
    EXPECT_EQ(sender.clear(1, 0), 0);
    expectSilence('a');
    for (const char letter : {'b', 'c', 'd'}) {
        const auto before = receiver.count(letter);
        EXPECT_TRUE(tztest::waitFor([&] { return receiver.count(letter) > before; })) << letter;
    }
    EXPECT_EQ(sender.clear(1), 0); // all channels of the kind
    expectSilence('b');
    const auto before = receiver.count('c');
    EXPECT_TRUE(tztest::waitFor([&] { return receiver.count('c') > before; }));
    EXPECT_EQ(sender.clear(), 0);
    expectSilence('c');
    expectSilence('d');
    EXPECT_EQ(sender.clear(7), 0); // nothing there: fine too
}

TEST_F(PeriodSenderTest, ClearWaitsForTheCallbackThatIsRunning)
{
    std::atomic<bool> inCallback{false};
    std::atomic<bool> release{false};
    std::atomic<bool> cleared{false};
    sender.setSendCallback([&](const std::vector<char> &, int) {
        inCallback = true;
        inCallback.notify_all();
        release.wait(false);
        EXPECT_FALSE(cleared.load()) << "the frame went out after clear() had returned";
        return 0;
    });
    ASSERT_EQ(sender.addFrame(frame('a', 60'000)), PeriodSender::Ok);
    inCallback.wait(false);
    std::thread clearing([&] {
        sender.clear();
        cleared = true;
    });
    // The frame is gone from the schedule: clear() is under way, and one that does not wait would return by now.
    EXPECT_TRUE(tztest::waitFor([&] { return !sender.updateData(frame('a', 1).key, {'x'}); }));
    letTimersFire();
    EXPECT_FALSE(cleared.load());
    release = true;
    release.notify_all();
    clearing.join();
    EXPECT_TRUE(cleared.load());
}

TEST_F(PeriodSenderTest, NoFrameGoesOutAfterClearReturned)
{
    std::atomic<bool> closed{true};
    std::atomic<int> late{0};
    sender.setSendCallback([&](const std::vector<char> &, int) {
        if (closed)
            ++late;
        return 0;
    });
    for (unsigned short round = 0; round < 300; ++round) {
        closed = false;
        ASSERT_EQ(sender.addFrame(frame('a', 1, 0, 1, round % 4)), PeriodSender::Ok);
        std::this_thread::sleep_for(std::chrono::microseconds(round * 7 % 1500));
        sender.clear(1, round % 4);
        closed = true;
    }
    EXPECT_EQ(late.load(), 0);
}

TEST_F(PeriodSenderTest, CallbackMayChangeTheSchedule)
{
    std::atomic<int> calls{0};
    sender.setSendCallback([&](const std::vector<char> &bytes, int) {
        if (++calls == 1)
            EXPECT_EQ(sender.addFrame(frame('b', 1)), PeriodSender::Ok);
        else if (bytes.size() == 2 || bytes[0] == 'b')
            sender.clear(); // must not wait for itself
        return 0;
    });
    ASSERT_EQ(sender.addFrame(frame('a', 1)), PeriodSender::Ok);
    ASSERT_TRUE(tztest::waitFor([&] { return calls >= 2; }));
    sender.clear();
    const int before = calls;
    letTimersFire();
    EXPECT_EQ(calls.load(), before);
}

TEST_F(PeriodSenderTest, OldCallbackIsNotUsedAfterItWasReplaced)
{
    ASSERT_EQ(sender.addFrame(frame('a', 1)), PeriodSender::Ok);
    ASSERT_TRUE(tztest::waitFor([&] { return receiver.count('a') > 0; }));
    FrameCounter other;
    sender.setSendCallback(other.callback());
    const auto before = receiver.count('a');
    ASSERT_TRUE(tztest::waitFor([&] { return other.count('a') > 3; }));
    EXPECT_EQ(receiver.count('a'), before);
    sender.setSendCallback(nullptr);
    expectSilence('a');
}

TEST_F(PeriodSenderTest, StallIsNotMadeUpByABurstAndIsTold)
{
    const tztest::LogCapture log;
    std::atomic<int> calls{0};
    sender.setSendCallback([&](const std::vector<char> &, int) {
        if (++calls == 1)
            std::this_thread::sleep_for(50ms); // a callback that blocks stalls the thread
        return 0;
    });
    ASSERT_EQ(sender.addFrame(frame('a', 1)), PeriodSender::Ok);
    ASSERT_TRUE(tztest::waitFor([&] { return sender.statistics().skippedFrames >= 48; }));
    const auto framesBefore = sender.statistics().frames; // before the calls are counted: it goes on meanwhile
    EXPECT_LE(framesBefore, 1U + static_cast<unsigned>(calls));
    EXPECT_GE(sender.statistics().maxLateness, 48ms);
    EXPECT_TRUE(tztest::waitFor(
        [&] { return log.countContaining(Common::LogLevel::warning, "sends skipped, their time had passed") > 0; }));
    sender.clear();
}

TEST_F(PeriodSenderTest, FailuresAreCountedAndLoggedOnceUntilItWorksAgain)
{
    const tztest::LogCapture log;
    const auto logged = [&] {
        return log.count(Common::LogLevel::warning, "Period sender: sending failed, error: -411");
    };
    receiver.setResult(-411);
    ASSERT_EQ(sender.addFrame(frame('a', 1)), PeriodSender::Ok);
    ASSERT_TRUE(tztest::waitFor([&] { return sender.statistics().failedDatagrams >= 10; }));
    EXPECT_EQ(logged(), 1U);
    receiver.setResult(0);
    const auto before = receiver.count('a');
    ASSERT_TRUE(tztest::waitFor([&] { return receiver.count('a') > before + 2; }));
    receiver.setResult(-411);
    EXPECT_TRUE(tztest::waitFor([&] { return logged() == 2; }));
}

TEST_F(PeriodSenderTest, EmergencyStopSilencesTheSender)
{
    ASSERT_EQ(sender.addFrame(frame('a', 1)), PeriodSender::Ok);
    ASSERT_TRUE(tztest::waitFor([&] { return receiver.count('a') > 0; }));
    Common::EmergencyStop::fire();
    letTimersFire(); // a callback may be on its way when the flag is set
    expectSilence('a');
    EXPECT_EQ(sender.addFrame(frame('b', 1)), PeriodSender::Ok);
    expectSilence('b');
    Common::EmergencyStop::reset();
}

TEST_F(PeriodSenderTest, AffinityBindsTheThreadAndLetsItGo)
{
    const auto processors = [] {
        cpu_set_t set;
        CPU_ZERO(&set);
        sched_getaffinity(0, sizeof(set), &set);
        return CPU_COUNT(&set);
    };
    const int all = processors();
    std::atomic<int> seen{0};
    sender.setSendCallback([&](const std::vector<char> &, int) {
        seen = processors();
        return 0;
    });
    sender.enableCpuAffinity(true);
    ASSERT_EQ(sender.addFrame(frame('a', 1)), PeriodSender::Ok);
    EXPECT_TRUE(tztest::waitFor([&] { return seen == 1; }));
    sender.enableCpuAffinity(false);
    EXPECT_TRUE(tztest::waitFor([&] { return seen == all; }));
    sender.clear();
}

TEST_F(PeriodSenderTest, DestructorEndsTheCallbacks)
{
    std::atomic<int> calls{0};
    {
        PeriodSender other;
        other.setSendCallback([&](const std::vector<char> &, int) { return ++calls; });
        ASSERT_EQ(other.addFrame(frame('a', 1)), PeriodSender::Ok);
        ASSERT_TRUE(tztest::waitFor([&] { return calls > 0; }));
    }
    const int before = calls;
    letTimersFire();
    EXPECT_EQ(calls.load(), before);
}

TEST_F(PeriodSenderTest, ManyThreadsMayUseItAtOnce)
{
    std::vector<std::thread> threads;
    for (unsigned short channel = 0; channel < 4; ++channel) {
        threads.emplace_back([this, channel] {
            for (int round = 0; round < 100; ++round) {
                EXPECT_EQ(sender.addFrames(frames({frame('a', 1, 0, 1, channel), frame('b', 2, 0, 1, channel)})), 0);
                sender.updateData(frame('a', 1, 0, 1, channel).key, {'c'});
                sender.removeFrame(frame('b', 1, 0, 1, channel).key);
                sender.clear(1, channel);
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    expectSilence('a');
    expectSilence('c');
}
