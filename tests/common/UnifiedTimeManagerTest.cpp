// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/UnifiedTimeManager.h"

#include <gtest/gtest.h>

#include <QDateTime>

#include <atomic>
#include <cmath>
#include <limits>
#include <thread>

using Common::TimestampDisplayMode;
using Common::UnifiedTimeManager;

namespace {

constexpr unsigned long long second = 10'000'000; // device ticks
constexpr unsigned long long base = 500 * second;
constexpr auto maxTimestamp = std::numeric_limits<unsigned long long>::max();

// 2025-05-07 14:30:22.123456 local time.
std::chrono::system_clock::time_point reference()
{
    const QDateTime local(QDate(2025, 5, 7), QTime(14, 30, 22));
    return std::chrono::system_clock::from_time_t(local.toSecsSinceEpoch()) + std::chrono::microseconds(123456);
}

class UnifiedTime : public testing::Test
{
protected:
    UnifiedTime()
    {
        m_time.initialize(reference(), 1e6);
        m_time.registerDevice(0, base);
        m_time.registerDevice(1, 7 * second, 2.5);
    }
    std::string format(int device, unsigned long long timestamp, TimestampDisplayMode mode)
    {
        return m_time.formatTimestamp(device, timestamp, mode);
    }
    std::string relative(unsigned long long timestamp)
    {
        return format(0, timestamp, TimestampDisplayMode::RelativeTime);
    }
    std::string delta(int device, unsigned long long timestamp)
    {
        return format(device, timestamp, TimestampDisplayMode::DeltaTime);
    }

    UnifiedTimeManager m_time;
};

TEST_F(UnifiedTime, AbsoluteTimeIsReferenceAndTimeSinceTheBase)
{
    EXPECT_EQ(format(0, base, TimestampDisplayMode::AbsoluteTime), "2025-05-07 14:30:22.123456");
    EXPECT_EQ(format(0, base + 3 * second, TimestampDisplayMode::AbsoluteTime), "2025-05-07 14:30:25.123456");
    EXPECT_EQ(format(0, base + 36000 * second, TimestampDisplayMode::AbsoluteTime), "2025-05-08 00:30:22.123456");
    EXPECT_EQ(format(0, base - 23 * second, TimestampDisplayMode::AbsoluteTime), "2025-05-07 14:29:59.123456");
}

TEST_F(UnifiedTime, TimeOfDayLeavesTheDateOut)
{
    EXPECT_EQ(format(0, base + second, TimestampDisplayMode::TimeOfDay), "14:30:23.123456");
}

TEST_F(UnifiedTime, RelativeTimeCountsFromTheDevicesBase)
{
    EXPECT_EQ(relative(base + 31234560), "3.123456");
    EXPECT_EQ(format(1, 7 * second + 31234560, TimestampDisplayMode::RelativeTime), "3.123456"); // no offset in here
}

TEST_F(UnifiedTime, TheOffsetLinesLaterDevicesUp)
{
    EXPECT_EQ(format(1, 8 * second, TimestampDisplayMode::GlobalRelativeTime), "3.500000");
    EXPECT_EQ(format(1, 8 * second, TimestampDisplayMode::AbsoluteTime), "2025-05-07 14:30:25.623456");
    EXPECT_EQ(format(1, 8 * second, TimestampDisplayMode::TimeOfDay), "14:30:25.623456");
    EXPECT_DOUBLE_EQ(m_time.getGlobalRelativeSeconds(1, 8 * second), 3.5);
}

TEST_F(UnifiedTime, GlobalSecondsAreSecondsWhateverTheScale)
{
    m_time.setTimeScaleFactor(1.0);
    EXPECT_DOUBLE_EQ(m_time.getGlobalRelativeSeconds(0, base + 12345), 0.0012345);
    EXPECT_DOUBLE_EQ(m_time.getGlobalRelativeSeconds(0, base - 2 * second), -2.0);
}

TEST_F(UnifiedTime, DeltaTimeIsTheDistanceToThePreviousCallForThatDevice)
{
    EXPECT_EQ(delta(0, base), "0.000000");
    EXPECT_EQ(delta(1, 70 * second), "0.000000");
    EXPECT_EQ(delta(0, base + 12340), "0.001234");
    EXPECT_EQ(delta(1, 71 * second), "1.000000");
    EXPECT_EQ(delta(0, base), "-0.001234");
}

TEST_F(UnifiedTime, DeltaTimeStartsAnewAfterAResetOrARegistration)
{
    delta(0, base);
    delta(1, second);
    m_time.resetDeltaTimeCalculator();
    EXPECT_EQ(delta(0, base + second), "0.000000");
    EXPECT_EQ(delta(1, base + second), "0.000000");
    m_time.registerDevice(0, 0);
    EXPECT_EQ(delta(0, second), "0.000000");
}

TEST_F(UnifiedTime, OtherModesLeaveTheDeltaAlone)
{
    delta(0, base);
    relative(base + 5 * second);
    EXPECT_EQ(delta(0, base + second), "1.000000");
}

TEST_F(UnifiedTime, TimesBeforeTheBaseBearASign)
{
    EXPECT_EQ(relative(base - 15'000'000), "-1.500000");
    EXPECT_EQ(format(0, base - 1'000, TimestampDisplayMode::GlobalRelativeTime), "-0.000100");
    EXPECT_EQ(relative(base - 1), "0.000000"); // rounds to nothing: no sign on zero
}

struct ScaleCase
{
    double factor;
    const char *relative;
    const char *timeOfDay;
};

class UnifiedTimeScale : public UnifiedTime, public testing::WithParamInterface<ScaleCase>
{
};

TEST_P(UnifiedTimeScale, DecimalsFollowTheFactor)
{
    m_time.setTimeScaleFactor(GetParam().factor);
    EXPECT_DOUBLE_EQ(m_time.getTimeScaleFactor(), GetParam().factor);
    EXPECT_EQ(relative(base + 31234567), GetParam().relative);
    EXPECT_EQ(format(0, base + 6, TimestampDisplayMode::TimeOfDay), GetParam().timeOfDay);
}

INSTANTIATE_TEST_SUITE_P(Factors, UnifiedTimeScale,
                         testing::Values(ScaleCase{1.0, "3", "14:30:22"}, ScaleCase{1e3, "3.123", "14:30:22.123"},
                                         ScaleCase{1e6, "3.123457", "14:30:22.123456"},
                                         ScaleCase{1e9, "3.123456700", "14:30:22.123456600"},
                                         ScaleCase{2.0, "3.1", "14:30:22.1"}, ScaleCase{100.0, "3.12", "14:30:22.12"},
                                         ScaleCase{0.5, "3", "14:30:22"},
                                         ScaleCase{1e30, "3.123456700", "14:30:22.123456600"}));

TEST_F(UnifiedTime, AFactorThatIsNotAboveZeroIsIgnored)
{
    for (const double factor : {0.0, -1.0, std::nan(""), std::numeric_limits<double>::infinity()}) {
        m_time.setTimeScaleFactor(factor);
        EXPECT_DOUBLE_EQ(m_time.getTimeScaleFactor(), 1e6);
    }
}

TEST_F(UnifiedTime, SpansAreRounded)
{
    m_time.setTimeScaleFactor(1.0);
    EXPECT_EQ(relative(base + 2 * second - 1), "2");
    EXPECT_EQ(relative(base + second + second / 2 - 1), "1");
}

TEST_F(UnifiedTime, ADeviceNeverRegisteredHasBaseZero)
{
    for (const int device : {5, -1, 256, 100000}) {
        EXPECT_EQ(format(device, 2 * second, TimestampDisplayMode::GlobalRelativeTime), "2.000000");
        EXPECT_EQ(format(device, 2 * second, TimestampDisplayMode::RelativeTime), "2.000000");
        EXPECT_EQ(delta(device, 2 * second), "0.000000");
        EXPECT_DOUBLE_EQ(m_time.getGlobalRelativeSeconds(device, 2 * second), 2.0);
    }
    m_time.registerDevice(-1, 5);
    m_time.registerDevice(256, 5);
}

TEST_F(UnifiedTime, AnUnknownModeReadsAsGlobalRelativeTime)
{
    EXPECT_EQ(format(0, base + second, static_cast<TimestampDisplayMode>(9)), "1.000000");
}

TEST_F(UnifiedTime, AbsurdTimeStampsAndBasesHaveSomeText)
{
    m_time.registerDevice(2, maxTimestamp, -1e300);
    m_time.registerDevice(3, 0, 1e300);
    for (int device = 0; device < 4; ++device) {
        for (const unsigned long long timestamp : {0ULL, 1ULL, maxTimestamp / 2, maxTimestamp}) {
            for (int mode = 0; mode <= 4; ++mode)
                EXPECT_FALSE(format(device, timestamp, static_cast<TimestampDisplayMode>(mode)).empty());
        }
    }
    m_time.registerDevice(4, 0, std::nan(""));
    EXPECT_EQ(format(4, second, TimestampDisplayMode::GlobalRelativeTime), "1.000000");
}

// Base and offset cancel out in every registration: a mixture would show another time.
TEST_F(UnifiedTime, ATimeStampIsTakenWhollyByOneBase)
{
    m_time.registerDevice(0, 0, 0.0);
    std::atomic<bool> stop{false};
    std::thread registering([&] {
        for (unsigned long long i = 0; !stop; ++i)
            m_time.registerDevice(0, i % 100 * second, static_cast<double>(i % 100));
    });
    for (int i = 0; i < 20000; ++i) {
        ASSERT_DOUBLE_EQ(m_time.getGlobalRelativeSeconds(0, 1000 * second), 1000.0);
        ASSERT_EQ(format(0, 1000 * second, TimestampDisplayMode::GlobalRelativeTime), "1000.000000");
        delta(0, static_cast<unsigned long long>(i));
    }
    stop = true;
    registering.join();
}

TEST(UnifiedTimeDefaults, AreMicrosecondsAndTheConstructionAsReference)
{
    UnifiedTimeManager time;
    EXPECT_DOUBLE_EQ(time.getTimeScaleFactor(), 1e6);
    EXPECT_EQ(time.formatTimestamp(0, 0, TimestampDisplayMode::AbsoluteTime).size(),
              std::string("2025-05-07 14:30:22.123456").size());
}

} // namespace
