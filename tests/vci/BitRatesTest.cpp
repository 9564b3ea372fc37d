// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciBitRates.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <utility>
#include <vector>

using testing::ElementsAre;

namespace {

using Rate = std::pair<std::string, std::uint32_t>;

std::vector<Rate> listed(std::span<const TzVciBitRate> rates)
{
    std::vector<Rate> list;
    for (const TzVciBitRate &rate : rates)
        list.emplace_back(rate.text, rate.value);
    return list;
}

} // namespace

TEST(BitRates, CanNominalTable)
{
    EXPECT_THAT(listed(TzVciBitRates::canNominal()),
                ElementsAre(Rate("1 Mbit/s", 1000000), Rate("800 kbit/s", 800000), Rate("500 kbit/s", 500000),
                            Rate("400 kbit/s", 400000), Rate("250 kbit/s", 250000), Rate("200 kbit/s", 200000),
                            Rate("160 kbit/s", 160000), Rate("125 kbit/s", 125000), Rate("100 kbit/s", 100000),
                            Rate("83.3 kbit/s", 83300), Rate("80 kbit/s", 80000), Rate("62.5 kbit/s", 62500),
                            Rate("50 kbit/s", 50000), Rate("40 kbit/s", 40000), Rate("33.33 kbit/s", 33333)));
}

TEST(BitRates, CanFdDataTable)
{
    EXPECT_THAT(listed(TzVciBitRates::canFdData()),
                ElementsAre(Rate("8 Mbit/s", 8000000), Rate("5 Mbit/s", 5000000), Rate("4 Mbit/s", 4000000),
                            Rate("2.5 Mbit/s", 2500000), Rate("2 Mbit/s", 2000000), Rate("1.6 Mbit/s", 1600000),
                            Rate("1.25 Mbit/s", 1250000), Rate("1 Mbit/s", 1000000), Rate("800 kbit/s", 800000),
                            Rate("500 kbit/s", 500000), Rate("400 kbit/s", 400000), Rate("250 kbit/s", 250000),
                            Rate("200 kbit/s", 200000)));
}

TEST(BitRates, LinTable)
{
    EXPECT_THAT(listed(TzVciBitRates::lin()),
                ElementsAre(Rate("19.2 kbit/s", 19200), Rate("10.4 kbit/s", 10400), Rate("9.6 kbit/s", 9600),
                            Rate("4.8 kbit/s", 4800), Rate("2.4 kbit/s", 2400)));
}

// They follow no common rounding, and both are wanted as they are.
TEST(BitRates, OddRatesAreNotRounded)
{
    EXPECT_THAT(listed(TzVciBitRates::canNominal()), testing::Contains(Rate("83.3 kbit/s", 83300)));
    EXPECT_THAT(listed(TzVciBitRates::canNominal()), testing::Contains(Rate("33.33 kbit/s", 33333)));
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
