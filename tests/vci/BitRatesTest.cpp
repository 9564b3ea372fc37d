// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciBitRates.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <string>

namespace {

const TzVciBitRate *find(std::span<const TzVciBitRate> rates, const std::string &text)
{
    for (const TzVciBitRate &rate : rates) {
        if (rate.text == text)
            return &rate;
    }
    return nullptr;
}

} // namespace

TEST(BitRates, TablesHaveTheirEntries)
{
    EXPECT_EQ(TzVciBitRates::canNominal().size(), 15U);
    EXPECT_EQ(TzVciBitRates::canFdData().size(), 13U);
    EXPECT_EQ(TzVciBitRates::lin().size(), 5U);
    EXPECT_EQ(find(TzVciBitRates::canNominal(), "500 kbit/s")->value, 500000U);
    EXPECT_EQ(find(TzVciBitRates::canFdData(), "1.25 Mbit/s")->value, 1250000U);
    EXPECT_EQ(find(TzVciBitRates::lin(), "10.4 kbit/s")->value, 10400U);
}

// They follow no common rounding, and both are wanted as they are.
TEST(BitRates, OddRatesStandAsStated)
{
    EXPECT_EQ(find(TzVciBitRates::canNominal(), "83.3 kbit/s")->value, 83300U);
    EXPECT_EQ(find(TzVciBitRates::canNominal(), "33.33 kbit/s")->value, 33333U);
}

TEST(BitRates, TextsAndValuesAgreeFastestFirst)
{
    for (const auto table : {TzVciBitRates::canNominal(), TzVciBitRates::canFdData(), TzVciBitRates::lin()}) {
        std::uint32_t previous = UINT32_MAX;
        for (const TzVciBitRate &rate : table) {
            const std::string text = rate.text;
            const double factor = text.ends_with(" Mbit/s") ? 1e6 : 1e3;
            EXPECT_NEAR(std::atof(rate.text) * factor, rate.value, 5.0) << text;
            EXPECT_LT(rate.value, previous) << text;
            previous = rate.value;
        }
    }
}
