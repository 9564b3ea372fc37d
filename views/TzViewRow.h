// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <compare>

/// A line of a view: a top row, or a child row of it. Ordered as the view shows them, children below their parent.
struct TzViewRow
{
    static constexpr int noChild = -1;

    int top = 0;
    int child = noChild;

    bool isChild() const { return child != noChild; }
    auto operator<=>(const TzViewRow &) const = default;
};
