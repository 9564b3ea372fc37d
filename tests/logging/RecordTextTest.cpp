// SPDX-License-Identifier: GPL-3.0-or-later
// The parts that all recordings are made of: times, digits, paths.
#include "common/UnifiedTimeManager.h"
#include "logging/LineDigits.h"
#include "logging/RecordClock.h"
#include "logging/RecordingPath.h"

#include <gtest/gtest.h>

#include <array>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>
#include <vector>

using Common::RecordClock;
using Common::RecordingPath;
using Common::UnifiedTimeManager;

namespace {

std::string secondsText(std::int64_t microseconds)
{
    std::array<char, Common::LineDigits::maxTimeLength> text{};
    return {text.data(), Common::LineDigits::seconds(text.data(), microseconds)};
}

std::string printedSeconds(std::int64_t t)
{
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%lld.%06d", static_cast<long long>(t / 1000000),
                  static_cast<int>(std::abs(t % 1000000)));
    return text.data();
}

TEST(RecordTime, KeepsTheSignInTheSecondsOnly)
{
    EXPECT_EQ(secondsText(-1'500'000), "-1.500000");
    EXPECT_EQ(secondsText(-500'000), "0.500000");
    EXPECT_EQ(secondsText(-1), "0.000001");
    EXPECT_EQ(secondsText(0), "0.000000");
    EXPECT_EQ(secondsText(21'560'451'329), "21560.451329");
}

TEST(RecordTime, AgreesWithThePrintedFormAtEveryMagnitude)
{
    std::vector<std::int64_t> values{std::numeric_limits<std::int64_t>::min(),
                                     std::numeric_limits<std::int64_t>::max()};
    for (std::int64_t value = 1; value < std::numeric_limits<std::int64_t>::max() / 7; value *= 7) {
        for (const std::int64_t near : {value - 1, value, value + 1})
            values.insert(values.end(), {near, -near});
    }
    for (const std::int64_t value : values)
        EXPECT_EQ(secondsText(value), printedSeconds(value));
}

TEST(RecordDigits, HexNumbersArePaddedButNeverCut)
{
    for (const std::uint32_t value : {0u, 1u, 0xfu, 0x10u, 0x7ffu, 0xfffu, 0x1000u, 0x12345678u, 0xffffffffu}) {
        for (const int width : {1, 3, 8}) {
            std::array<char, 8> text{};
            char *const end = Common::LineDigits::hex(text.data(), value, width, Common::LineDigits::lowerHex);
            EXPECT_EQ(std::string(text.data(), end), fmt::format("{:0{}x}", value, width));
        }
    }
}

TEST(RecordClock, WithoutCommonTimeTakesTheDevicesUnitsAsTheyAre)
{
    RecordClock clock(nullptr, true);
    EXPECT_EQ(clock.next(0, 5'000), 0);
    EXPECT_EQ(clock.next(0, 5'001), 1);
    EXPECT_EQ(clock.next(0, 4'000), -1'000);
}

TEST(RecordClock, WithCommonTimeRoundsToMicroseconds)
{
    UnifiedTimeManager time;
    time.registerDevice(0, 1'000);
    RecordClock clock(&time, true);
    EXPECT_EQ(clock.next(0, 1'000), 0); // 0 + 0.5, truncated
    EXPECT_EQ(clock.next(0, 1'004), 0); // 0.4 us
    EXPECT_EQ(clock.next(0, 1'005), 1); // 0.5 us
    EXPECT_EQ(clock.next(0, 1'015), 2); // 1.5 us
}

TEST(RecordClock, TruncatesTowardsZeroBelowTheReference)
{
    UnifiedTimeManager time;
    time.registerDevice(0, 1'000);
    RecordClock clock(&time, true);
    EXPECT_EQ(clock.next(0, 1'000), 0);
    EXPECT_EQ(clock.next(0, 990), 0);  // -1 us + 0.5
    EXPECT_EQ(clock.next(0, 980), -1); // -2 us + 0.5
    EXPECT_EQ(clock.next(0, 976), -1); // -2.4 us + 0.5
}

TEST(RecordClock, AlignsSeveralDevices)
{
    UnifiedTimeManager time;
    time.registerDevice(0, 50'000'000);
    time.registerDevice(1, 10'000'000, 2.0);
    RecordClock clock(&time, true);
    EXPECT_EQ(clock.next(0, 50'000'000), 0);
    EXPECT_EQ(clock.next(1, 10'000'000), 2'000'000);
}

TEST(RecordClock, RelativeTimeIsTheDistanceToTheRecordBefore)
{
    RecordClock clock(nullptr, false);
    EXPECT_EQ(clock.next(0, 700), 0);
    EXPECT_EQ(clock.next(0, 900), 200);
    EXPECT_EQ(clock.next(0, 850), -50);
}

TEST(RecordClock, StartsAtZeroInEachFile)
{
    for (const bool absoluteTime : {true, false}) {
        RecordClock clock(nullptr, absoluteTime);
        EXPECT_EQ(clock.next(0, 700), 0);
        EXPECT_EQ(clock.next(0, 900), 200);
        clock.restart();
        EXPECT_EQ(clock.next(0, 1'000), 0);
        EXPECT_EQ(clock.next(0, 1'100), 100);
    }
}

TEST(RecordClock, BearsTheWildestTimeStamps)
{
    UnifiedTimeManager time;
    time.registerDevice(0, 0, 1e308);
    for (const UnifiedTimeManager *unified : {static_cast<const UnifiedTimeManager *>(nullptr), &std::as_const(time)}) {
        RecordClock clock(unified, true);
        EXPECT_EQ(clock.next(0, std::uint64_t{1} << 63), 0);
        for (const std::uint64_t ticks : {std::uint64_t{0}, ~std::uint64_t{0}, (std::uint64_t{1} << 63) - 1})
            clock.next(0, ticks);
    }
}

struct PathCase
{
    const char *name;
    const char *path;
    const char *directory;
    const char *stem;
    const char *extension;
    const char *kept;
};

class RecordingPathParts : public testing::TestWithParam<PathCase>
{
};

TEST_P(RecordingPathParts, AreSplit)
{
    const RecordingPath path(GetParam().path);
    EXPECT_EQ(path.path(), GetParam().path);
    EXPECT_EQ(path.directory(), GetParam().directory);
    EXPECT_EQ(path.stem(), GetParam().stem);
    EXPECT_EQ(path.extension(), GetParam().extension);
    EXPECT_EQ(path.keptPath(12), GetParam().kept);
}

INSTANTIATE_TEST_SUITE_P(
    Paths, RecordingPathParts,
    testing::Values(PathCase{"Full", "/log/run.asc", "/log/", "run", ".asc", "/log/run.12.asc"},
                    PathCase{"EmptyDirectoryStaysEmpty", "run.asc", "", "run", ".asc", "run.12.asc"},
                    PathCase{"LastDotOfTheName", "a.b/run.x.csv", "a.b/", "run.x", ".csv", "a.b/run.x.12.csv"},
                    PathCase{"NoExtension", "a.b/run", "a.b/", "run", "", "a.b/run.12"},
                    PathCase{"NothingBehindTheDot", "run.", "", "run", ".", "run.12."},
                    PathCase{"HiddenFile", "logs/.asc", "logs/", "", ".asc", "logs/.12.asc"},
                    PathCase{"Root", "/run.asc", "/", "run", ".asc", "/run.12.asc"},
                    PathCase{"Folder", "logs/", "logs/", "", "", "logs/.12"},
                    PathCase{"BlanksAndChinese", "测试 一/记录 1.asc", "测试 一/", "记录 1", ".asc",
                             "测试 一/记录 1.12.asc"},
                    PathCase{"Empty", "", "", "", "", ".12"}),
    [](const auto &test) { return std::string(test.param.name); });

} // namespace
