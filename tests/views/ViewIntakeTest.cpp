// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/TzViewIntake.h"

#include "tests/views/ViewFrames.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace tztest;

namespace {

using Counters = TzViewIntake::Counters;

void expectCounters(const TzViewIntake &intake, const Counters &wanted)
{
    const Counters now = intake.counters();
    EXPECT_EQ(now.total, wanted.total);
    EXPECT_EQ(now.rx, wanted.rx);
    EXPECT_EQ(now.tx, wanted.tx);
    EXPECT_EQ(now.err, wanted.err);
}

TEST(ViewIntake, LetsInEightChannelsOfSixteenDevices)
{
    TzViewIntake intake(TzVciViewKind::can);
    EXPECT_EQ(intake.devices().size(), 16u);
    for (const auto &[device, channels] : intake.devices()) {
        EXPECT_LT(device, 16);
        EXPECT_EQ(channels, (std::unordered_set<std::uint8_t>{0, 1, 2, 3, 4, 5, 6, 7}));
    }
    const std::vector<TzVciMessage> batch{from(0, 0, canMessage(1)), from(15, 7, canMessage(2)),
                                          from(0, 8, canMessage(3)), from(16, 0, canMessage(4)),
                                          from(255, 255, canMessage(5))};
    const auto entered = intake.accept(batch);
    ASSERT_EQ(entered.size(), 2u);
    EXPECT_EQ(entered[0].frame.can.canId, 1u);
    EXPECT_EQ(entered[1].frame.can.canId, 2u);
}

TEST(ViewIntake, AWholeBatchIsNotCopied)
{
    TzViewIntake intake(TzVciViewKind::can);
    const std::vector<TzVciMessage> batch(100, canMessage(1));
    EXPECT_EQ(intake.accept(batch).data(), batch.data());
    EXPECT_TRUE(intake.accept({}).empty());
}

TEST(ViewIntake, AFrameOfAnotherChannelIsNeitherTakenNorCounted)
{
    TzViewIntake intake(TzVciViewKind::can);
    intake.setDevices({{1, {0, 200}}, {99, {0}}});
    const std::vector<TzVciMessage> batch{from(1, 1, canMessage(1)),   from(1, 0, canMessage(2)),
                                          from(0, 0, canMessage(3)),   from(1, 200, canMessage(4)),
                                          from(1, 201, canMessage(5)), from(99, 0, canMessage(6))};
    const auto entered = intake.accept(batch);
    ASSERT_EQ(entered.size(), 2u);
    EXPECT_EQ(entered[0].frame.can.canId, 2u);
    EXPECT_EQ(entered[1].frame.can.canId, 4u);
    expectCounters(intake, {.total = 2, .rx = 2});
}

TEST(ViewIntake, AnEmptyChoiceLetsNothingIn)
{
    TzViewIntake intake(TzVciViewKind::can);
    intake.setDevices({});
    EXPECT_TRUE(intake.accept({canMessage(1)}).empty());
    expectCounters(intake, {});
}

TEST(ViewIntake, CountsCanFramesByType)
{
    TzViewIntake intake(TzVciViewKind::can);
    (void)intake.accept(
        {canMessage(1, 1), canMessage(1, 2), canMessage(1, 2), canMessage(1, 4), canMessage(1, 8), canMessage(1, 0)});
    expectCounters(intake, {.total = 6, .rx = 2, .tx = 1, .err = 1});
}

TEST(ViewIntake, CountsLinFramesByDirection)
{
    for (const std::uint8_t kind : {TzVciViewKind::lin, TzVciViewKind::ldf}) {
        TzViewIntake intake(kind);
        (void)intake.accept({linMessage(1, 0), linMessage(1, 1), linMessage(1, 16), linMessage(1, 17), linMessage(1, 2),
                             linMessage(1, 255)});
        expectCounters(intake, {.total = 6, .rx = 2, .tx = 2, .err = 2});
    }
}

TEST(ViewIntake, PausingLosesFramesAndCountersStandStill)
{
    TzViewIntake intake(TzVciViewKind::can);
    (void)intake.accept({canMessage(1)});
    intake.setPaused(true);
    EXPECT_TRUE(intake.accept({canMessage(2)}).empty());
    expectCounters(intake, {.total = 1, .rx = 1});
    intake.setPaused(false);
    EXPECT_EQ(intake.accept({canMessage(3)}).size(), 1u);
    expectCounters(intake, {.total = 2, .rx = 2});
}

TEST(ViewIntake, StatusTextHasTwelveDigits)
{
    TzViewIntake intake(TzVciViewKind::can);
    EXPECT_EQ(intake.statusText().toStdString(), "Tl:000000000000 Rx:000000000000 Tx:000000000000 Err:000000000000");
    (void)intake.accept(std::vector<TzVciMessage>(123, canMessage(1)));
    (void)intake.accept({canMessage(1, 1), canMessage(1, 4)});
    EXPECT_EQ(intake.statusText().toStdString(), "Tl:000000000125 Rx:000000000123 Tx:000000000001 Err:000000000001");
    intake.resetCounters();
    expectCounters(intake, {});
}

TEST(ViewIntake, ChannelsAndPauseMayChangeUnderADelivery)
{
    TzViewIntake intake(TzVciViewKind::can);
    std::atomic<bool> stop{false};
    std::atomic<std::uint64_t> entered{0};
    std::jthread delivering([&] {
        std::vector<TzVciMessage> batch;
        for (std::uint8_t device = 0; device < 16; ++device)
            batch.push_back(from(device, device % 8, canMessage(device)));
        while (!stop)
            entered += intake.accept(batch).size();
    });
    for (std::uint8_t round = 0; round < 200; ++round) {
        intake.setPaused(round % 3 == 0);
        intake.setDevices({{static_cast<std::uint8_t>(round % 16), {0, 1, 2, 3, 4, 5, 6, 7}}});
        (void)intake.statusText();
    }
    intake.setPaused(false);
    const std::uint64_t before = entered;
    while (entered == before)
        std::this_thread::yield();
    stop = true;
    delivering.join();
    EXPECT_EQ(intake.counters().total, entered);
    EXPECT_EQ(intake.counters().rx, entered);
}

} // namespace
