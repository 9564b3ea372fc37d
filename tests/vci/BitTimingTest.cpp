// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciBitTiming.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

using Rating = TzVciBitTiming::SamplePointRating;

struct DividerCase
{
    const char *name;
    TzVciBitTiming timing;
    double divider;
    bool valid;
};

class BitTimingDivider : public testing::TestWithParam<DividerCase>
{
};

TEST_P(BitTimingDivider, IsComputedAndJudged)
{
    EXPECT_NEAR(GetParam().timing.divider(), GetParam().divider, 5e-5);
    EXPECT_EQ(GetParam().timing.isDividerValid(), GetParam().valid);
}

INSTANTIATE_TEST_SUITE_P(Cases, BitTimingDivider,
                         testing::Values(DividerCase{"NominalDefaultIsFour", {31, 8, 500000}, 4.0, true},
                                         DividerCase{"DataDefaultIsTwo", {15, 4, 2000000}, 2.0, true},
                                         DividerCase{"Rate33333PassesByTheTolerance", {31, 8, 33333}, 60.0006, true},
                                         DividerCase{"Rate83300PassesByTheTolerance", {31, 8, 83300}, 24.0096, true},
                                         DividerCase{"JustBelowAnIntegerPasses", {31, 8, 500500}, 3.996, true},
                                         DividerCase{"AThirdFails", {3, 8, 500000}, 13.3333, false},
                                         DividerCase{"AHalfFails", {31, 8, 800000}, 2.5, false},
                                         DividerCase{"ExactlyOnePasses", {6, 3, 8000000}, 1.0, true},
                                         DividerCase{"ATenthFails", {64, 32, 8000000}, 0.10309, false},
                                         DividerCase{"JustBelowOnePasses", {31, 8, 2010000}, 0.99502, true}),
                         [](const auto &test) { return std::string(test.param.name); });

TEST(BitTiming, NoRateHasNoValidDivider)
{
    const TzVciBitTiming timing{31, 8, 0};
    EXPECT_FALSE(std::isfinite(timing.divider()));
    EXPECT_FALSE(timing.isDividerValid());
}

struct SamplePointCase
{
    const char *name;
    int seg1;
    int seg2;
    double percent;
    Rating rating;
};

class BitTimingSamplePoint : public testing::TestWithParam<SamplePointCase>
{
};

TEST_P(BitTimingSamplePoint, IsComputedAndRated)
{
    const TzVciBitTiming timing{GetParam().seg1, GetParam().seg2, 500000};
    EXPECT_NEAR(timing.samplePointPercent(), GetParam().percent, 0.005);
    EXPECT_EQ(timing.samplePointRating(), GetParam().rating);
}

INSTANTIATE_TEST_SUITE_P(Cases, BitTimingSamplePoint,
                         testing::Values(SamplePointCase{"DefaultNominal", 31, 8, 80.0, Rating::Good},
                                         SamplePointCase{"DefaultData", 15, 4, 80.0, Rating::Good},
                                         SamplePointCase{"ExactlySeventy", 6, 3, 70.0, Rating::Acceptable},
                                         SamplePointCase{"BelowSeventy", 5, 3, 66.67, Rating::Poor},
                                         SamplePointCase{"ExactlySeventyFive", 2, 1, 75.0, Rating::Good},
                                         SamplePointCase{"BelowSeventyFive", 13, 5, 73.68, Rating::Acceptable},
                                         SamplePointCase{"ExactlyEightySevenAndAHalf", 6, 1, 87.5, Rating::Good},
                                         SamplePointCase{"AboveEightySevenAndAHalf", 7, 1, 88.89, Rating::Acceptable},
                                         SamplePointCase{"ExactlyNinety", 8, 1, 90.0, Rating::Acceptable},
                                         SamplePointCase{"AboveNinety", 64, 1, 98.48, Rating::Poor}),
                         [](const auto &test) { return std::string(test.param.name); });

} // namespace
