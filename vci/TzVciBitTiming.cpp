// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciBitTiming.h"

#include <cmath>
#include <limits>

namespace {

constexpr int syncQuanta = 1; // every bit begins with one quantum of synchronisation
constexpr double dividerTolerance = 0.01;

} // namespace

double TzVciBitTiming::samplePointPercent() const noexcept
{
    const int quanta = seg1 + seg2 + syncQuanta;
    return quanta > 0 ? 100.0 * (seg1 + syncQuanta) / quanta : 0.0;
}

TzVciBitTiming::SamplePointRating TzVciBitTiming::samplePointRating() const noexcept
{
    const double percent = samplePointPercent();
    if (percent < 70.0 || percent > 90.0)
        return SamplePointRating::Poor;
    return percent >= 75.0 && percent <= 87.5 ? SamplePointRating::Good : SamplePointRating::Acceptable;
}

double TzVciBitTiming::divider() const noexcept
{
    const double quantaPerSecond = static_cast<double>(seg1 + seg2 + syncQuanta) * bitRate;
    return quantaPerSecond > 0.0 ? clockHz / quantaPerSecond : std::numeric_limits<double>::infinity();
}

bool TzVciBitTiming::isDividerValid() const noexcept
{
    const double value = divider();
    if (!std::isfinite(value))
        return false;
    const double fraction = value - std::floor(value);
    return fraction < dividerTolerance || fraction > 1.0 - dividerTolerance;
}
