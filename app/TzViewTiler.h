// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRect>
#include <QSize>

#include <cstddef>
#include <vector>

/// How many traffic views the area of the main window takes, all kinds together.
inline constexpr std::size_t tzMaxViews = 4;

/// Where the views lie when they are tiled. Geometry alone: no widget is touched.
class TzViewTiler
{
public:
    /// The rectangles of @p count views in an area of that size, in the order of the views. Halves are rounded down.
    /// @return one rectangle a view; empty for a count outside 1 to tzMaxViews, which leaves views where they are
    static std::vector<QRect> tiles(int count, const QSize &area);
};
