// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/TzVisibleRows.h"

#include <algorithm>

TzVisibleRows TzVisibleRows::compute(const Geometry &geometry) noexcept
{
    const int lastRow = geometry.rows - 1;
    const int perPage = std::max(geometry.viewportHeight / geometry.rowHeight, 1);
    const int scrollable = std::max(geometry.rows - perPage, 0);

    TzVisibleRows visible;
    visible.last = lastRow;
    if (scrollable > 0) {
        if (geometry.scrollMaximum >= 1) {
            // The position as a share of the way, since a bar may count pixels instead of rows.
            const double share = static_cast<double>(geometry.scrollValue) / geometry.scrollMaximum;
            visible.first = static_cast<int>(share * scrollable);
        }
        const int behind = visible.first + perPage;
        visible.last = behind > lastRow ? lastRow : behind - 1;
    }
    visible.first = std::max(std::min(visible.first, lastRow), 0);
    visible.last = std::max(std::min(visible.last, lastRow), visible.first);
    visible.atBottom = geometry.scrollValue == geometry.scrollMaximum;
    return visible;
}
