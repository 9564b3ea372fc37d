// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/TzViewTiler.h"

std::vector<QRect> TzViewTiler::tiles(int count, const QSize &area)
{
    const int width = area.width();
    const int height = area.height();
    const int halfWidth = width / 2;
    const int halfHeight = height / 2;
    switch (count) {
    case 1: return {QRect(0, 0, width, height)};
    case 2: return {QRect(0, 0, width, halfHeight), QRect(0, halfHeight, width, halfHeight)};
    case 3:
        return {QRect(0, 0, halfWidth, height), QRect(halfWidth, 0, halfWidth, halfHeight),
                QRect(halfWidth, halfHeight, halfWidth, halfHeight)};
    case 4:
        return {QRect(0, 0, halfWidth, halfHeight), QRect(halfWidth, 0, halfWidth, halfHeight),
                QRect(0, halfHeight, halfWidth, halfHeight), QRect(halfWidth, halfHeight, halfWidth, halfHeight)};
    default: return {};
    }
}
