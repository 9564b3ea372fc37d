// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/TzRawFrameFilter.h"

#include "tests/views/ViewFrames.h"

#include <gtest/gtest.h>

using namespace tztest;

namespace {

TzRawFrameFilter enabledFilter()
{
    TzRawFrameFilter filter;
    filter.enabled = true;
    return filter;
}

TEST(RawFrameFilter, IsInactiveWithAllCombosAtAllAndNoText)
{
    const TzRawFrameFilter filter = enabledFilter();
    EXPECT_FALSE(filter.isActive());
    EXPECT_TRUE(filter.passesCan(from(15, 7, canMessage(0x1FFFFFFF, 8))));
    EXPECT_TRUE(filter.passesLin(from(15, 7, linMessage(0x3F, 99))));
}

TEST(RawFrameFilter, AHiddenBarFiltersNothing)
{
    TzRawFrameFilter filter;
    filter.device = 3;
    filter.ids.setText(QStringLiteral("123"));
    EXPECT_FALSE(filter.isActive());
    EXPECT_TRUE(filter.passesCan(canMessage(0x124)));
    EXPECT_TRUE(filter.passesLin(linMessage(0x24)));
}

TEST(RawFrameFilter, EachConditionAloneMakesItActive)
{
    TzRawFrameFilter filter = enabledFilter();
    filter.device = 0;
    EXPECT_TRUE(filter.isActive());
    filter = enabledFilter();
    filter.channel = 0;
    EXPECT_TRUE(filter.isActive());
    filter = enabledFilter();
    filter.direction = 1;
    EXPECT_TRUE(filter.isActive());
    filter = enabledFilter();
    filter.ids.setText(QStringLiteral("XYZ"));
    EXPECT_TRUE(filter.isActive());
}

TEST(RawFrameFilter, UnreadableIdTextPassesTheIdTest)
{
    TzRawFrameFilter filter = enabledFilter();
    filter.ids.setText(QStringLiteral("XYZ"));
    EXPECT_TRUE(filter.passesCan(canMessage(0x123)));
    EXPECT_TRUE(filter.passesLin(linMessage(0x12)));
}

TEST(RawFrameFilter, DeviceAndChannel)
{
    TzRawFrameFilter filter = enabledFilter();
    filter.device = 2;
    filter.channel = 5;
    EXPECT_TRUE(filter.passesCan(from(2, 5, canMessage(1))));
    EXPECT_FALSE(filter.passesCan(from(3, 5, canMessage(1))));
    EXPECT_FALSE(filter.passesCan(from(2, 4, canMessage(1))));
    EXPECT_TRUE(filter.passesLin(from(2, 5, linMessage(1))));
    EXPECT_FALSE(filter.passesLin(from(3, 5, linMessage(1))));
    EXPECT_FALSE(filter.passesLin(from(2, 4, linMessage(1))));
}

TEST(RawFrameFilter, CanDirectionIsTheFrameType)
{
    TzRawFrameFilter filter = enabledFilter();
    for (const std::uint8_t direction : {1, 2, 4}) {
        filter.direction = direction;
        for (const std::uint8_t frameType : {1, 2, 4, 8})
            EXPECT_EQ(filter.passesCan(canMessage(1, frameType)), frameType == direction);
    }
}

TEST(RawFrameFilter, LinDirectionIsTheWriteBit)
{
    TzRawFrameFilter filter = enabledFilter();
    const auto passes = [&filter](std::uint8_t direction) { return filter.passesLin(linMessage(1, direction)); };
    filter.direction = 1;
    EXPECT_TRUE(passes(0) && passes(1));
    EXPECT_FALSE(passes(16) || passes(17));
    filter.direction = 16;
    EXPECT_FALSE(passes(0) || passes(1));
    EXPECT_TRUE(passes(16) && passes(17));
    filter.direction = 2; // no direction of a LIN view
    EXPECT_TRUE(passes(0) && passes(1) && passes(16) && passes(17));
}

TEST(RawFrameFilter, AllConditionsMustHold)
{
    TzRawFrameFilter filter = enabledFilter();
    filter.device = 1;
    filter.direction = 2;
    filter.ids.setText(QStringLiteral("100-200"));
    EXPECT_TRUE(filter.passesCan(from(1, 0, canMessage(0x150, 2))));
    EXPECT_FALSE(filter.passesCan(from(1, 0, canMessage(0x250, 2))));
    EXPECT_FALSE(filter.passesCan(from(1, 0, canMessage(0x150, 1))));
    EXPECT_FALSE(filter.passesCan(from(0, 0, canMessage(0x150, 2))));
    filter.direction = 1;
    filter.ids.setText(QStringLiteral("10"));
    EXPECT_TRUE(filter.passesLin(from(1, 0, linMessage(0x10, 1))));
    EXPECT_FALSE(filter.passesLin(from(1, 0, linMessage(0x11, 1))));
    EXPECT_FALSE(filter.passesLin(from(1, 0, linMessage(0x10, 16))));
}

} // namespace
