// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciBitRates.h"

#include <array>

namespace {

constexpr std::array canNominalRates{
    TzVciBitRate{"1 Mbit/s", 1000000},  TzVciBitRate{"800 kbit/s", 800000}, TzVciBitRate{"500 kbit/s", 500000},
    TzVciBitRate{"400 kbit/s", 400000}, TzVciBitRate{"250 kbit/s", 250000}, TzVciBitRate{"200 kbit/s", 200000},
    TzVciBitRate{"160 kbit/s", 160000}, TzVciBitRate{"125 kbit/s", 125000}, TzVciBitRate{"100 kbit/s", 100000},
    TzVciBitRate{"83.3 kbit/s", 83300}, TzVciBitRate{"80 kbit/s", 80000},   TzVciBitRate{"62.5 kbit/s", 62500},
    TzVciBitRate{"50 kbit/s", 50000},   TzVciBitRate{"40 kbit/s", 40000},   TzVciBitRate{"33.33 kbit/s", 33333},
};

constexpr std::array canFdDataRates{
    TzVciBitRate{"8 Mbit/s", 8000000},    TzVciBitRate{"5 Mbit/s", 5000000},  TzVciBitRate{"4 Mbit/s", 4000000},
    TzVciBitRate{"2.5 Mbit/s", 2500000},  TzVciBitRate{"2 Mbit/s", 2000000},  TzVciBitRate{"1.6 Mbit/s", 1600000},
    TzVciBitRate{"1.25 Mbit/s", 1250000}, TzVciBitRate{"1 Mbit/s", 1000000},  TzVciBitRate{"800 kbit/s", 800000},
    TzVciBitRate{"500 kbit/s", 500000},   TzVciBitRate{"400 kbit/s", 400000}, TzVciBitRate{"250 kbit/s", 250000},
    TzVciBitRate{"200 kbit/s", 200000},
};

constexpr std::array linRates{
    TzVciBitRate{"19.2 kbit/s", 19200}, TzVciBitRate{"10.4 kbit/s", 10400}, TzVciBitRate{"9.6 kbit/s", 9600},
    TzVciBitRate{"4.8 kbit/s", 4800},   TzVciBitRate{"2.4 kbit/s", 2400},
};

} // namespace

std::span<const TzVciBitRate> TzVciBitRates::canNominal() noexcept
{
    return canNominalRates;
}

std::span<const TzVciBitRate> TzVciBitRates::canFdData() noexcept
{
    return canFdDataRates;
}

std::span<const TzVciBitRate> TzVciBitRates::lin() noexcept
{
    return linRates;
}
