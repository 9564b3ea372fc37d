// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// The rows of a table that are on the screen, as far as its scroll bar tells.
struct TzVisibleRows
{
    /// What is read from a view with rows of one height.
    struct Geometry
    {
        int rows = 0;           ///< rows of the model
        int viewportHeight = 0; ///< pixels
        int rowHeight = 1;      ///< pixels, above 0
        int scrollValue = 0;
        int scrollMaximum = 0;
    };

    int first = 0;
    int last = 0;          ///< inclusive; not below first, also in an empty table
    bool atBottom = false; ///< the scroll bar stands at its maximum

    static TzVisibleRows compute(const Geometry &geometry) noexcept;
    bool operator==(const TzVisibleRows &) const = default;
};
