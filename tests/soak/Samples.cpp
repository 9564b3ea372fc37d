// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/soak/Samples.h"

#include <algorithm>

namespace tzsoak {

namespace {

using Iterator = std::vector<tztest::ProcessFigures>::const_iterator;

template <typename Figure> double medianOf(Iterator first, Iterator last, Figure figure)
{
    std::vector<double> values;
    std::transform(first, last, std::back_inserter(values), figure);
    if (values.empty())
        return 0;
    const auto middle = values.begin() + std::ssize(values) / 2;
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

} // namespace

void Samples::take()
{
    m_samples.push_back(tztest::ProcessFigures::of());
}

template <typename Figure> Samples::Trend Samples::trendOf(Figure figure) const
{
    const auto quarter = std::ssize(m_samples) / 4;
    const auto begin = m_samples.begin();
    return {medianOf(begin + quarter, begin + 2 * quarter, figure),
            medianOf(begin + 3 * quarter, m_samples.end(), figure)};
}

Samples::Trend Samples::memoryMiB() const
{
    return trendOf([](const tztest::ProcessFigures &sample) { return sample.residentMiB; });
}

Samples::Trend Samples::threads() const
{
    return trendOf([](const tztest::ProcessFigures &sample) { return static_cast<double>(sample.threads); });
}

Samples::Trend Samples::descriptors() const
{
    return trendOf([](const tztest::ProcessFigures &sample) { return static_cast<double>(sample.descriptors); });
}

} // namespace tzsoak
