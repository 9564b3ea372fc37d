// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/TzVisibleRows.h"

#include <gtest/gtest.h>

namespace {

struct VisibleCase
{
    const char *name;
    TzVisibleRows::Geometry geometry;
    TzVisibleRows wanted;
};

class VisibleRows : public testing::TestWithParam<VisibleCase>
{
};

TEST_P(VisibleRows, AreComputed)
{
    const TzVisibleRows rows = TzVisibleRows::compute(GetParam().geometry);
    EXPECT_EQ(rows.first, GetParam().wanted.first);
    EXPECT_EQ(rows.last, GetParam().wanted.last);
    EXPECT_EQ(rows.atBottom, GetParam().wanted.atBottom);
}

INSTANTIATE_TEST_SUITE_P(Geometry, VisibleRows,
                         testing::Values(VisibleCase{"EmptyTable", {0, 320, 16, 0, 0}, {0, 0, true}},
                                         VisibleCase{"OneRow", {1, 320, 16, 0, 0}, {0, 0, true}},
                                         VisibleCase{"AllRowsFit", {20, 320, 16, 0, 0}, {0, 19, true}},
                                         VisibleCase{"AtTheTop", {100, 320, 16, 0, 80}, {0, 19, false}},
                                         VisibleCase{"InTheMiddle", {100, 320, 16, 40, 80}, {40, 59, false}},
                                         // behind the last row: it is named as it is, not one less
                                         VisibleCase{"AtTheBottom", {100, 320, 16, 80, 80}, {80, 99, true}},
                                         VisibleCase{"OneAboveTheBottom", {100, 320, 16, 79, 80}, {79, 98, false}},
                                         VisibleCase{"BarCountsPixels", {100, 320, 16, 640, 1280}, {40, 59, false}},
                                         VisibleCase{"ShareIsCut", {100, 320, 16, 1, 3}, {26, 45, false}},
                                         VisibleCase{"BarWithoutWay", {100, 320, 16, 0, 0}, {0, 19, true}},
                                         VisibleCase{"ViewportLowerThanARow", {100, 10, 16, 50, 99}, {50, 50, false}},
                                         VisibleCase{"PartOfARowIsNotCounted", {100, 335, 16, 0, 80}, {0, 19, false}}),
                         [](const auto &test) { return std::string(test.param.name); });

} // namespace
