// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <string_view>
#include <vector>

namespace tzbench_report {

/// Which side of the target is good.
enum class Want { AtLeast, AtMost };

/// Prints one figure as `name value unit target ok|short`, tab-separated. @return whether the target holds
inline bool report(std::string_view name, double value, std::string_view unit, Want want, double target)
{
    const bool ok = want == Want::AtLeast ? value >= target : value <= target;
    fmt::print("{}\t{:.6g}\t{}\t{}{:.6g}\t{}\n", name, value, unit, want == Want::AtLeast ? ">=" : "<=", target,
               ok ? "ok" : "short");
    std::fflush(stdout);
    return ok;
}

/// The middle of the runs; 0 for none.
inline double median(std::vector<double> values)
{
    if (values.empty())
        return 0.0;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

} // namespace tzbench_report
