// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/support/ProcessFigures.h"

#include <vector>

namespace tzsoak {

/// What the process held, sample by sample, and whether that grew.
class Samples
{
public:
    void take();
    std::size_t count() const { return m_samples.size(); }

    /// A figure's medians over the second and the last quarter of the run: the first belongs to the warm-up.
    struct Trend
    {
        double early = 0;
        double late = 0;
        double growth() const { return late - early; }
    };
    Trend memoryMiB() const;
    Trend threads() const;
    Trend descriptors() const;

private:
    template <typename Figure> Trend trendOf(Figure figure) const;

    std::vector<tztest::ProcessFigures> m_samples;
};

} // namespace tzsoak
