// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/TzViewIdFilter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <vector>

namespace {

struct IdCase
{
    const char *name;
    const char *text;
    std::vector<std::uint32_t> shown;
    std::vector<std::uint32_t> hidden;
};

class ViewIdFilter : public testing::TestWithParam<IdCase>
{
};

TEST_P(ViewIdFilter, ShowsWhatTheListTells)
{
    TzViewIdFilter filter;
    filter.setText(QString::fromLatin1(GetParam().text));
    for (const std::uint32_t id : GetParam().shown)
        EXPECT_TRUE(filter.passes(id)) << std::hex << id;
    for (const std::uint32_t id : GetParam().hidden)
        EXPECT_FALSE(filter.passes(id)) << std::hex << id;
}

const std::vector<std::uint32_t> some{0, 0x100, 0x123, 0x7FF, 0xFFFFFFFF};

INSTANTIATE_TEST_SUITE_P(
    Grammar, ViewIdFilter,
    testing::Values(
        IdCase{"EmptyTextShowsAll", "", some, {}}, IdCase{"SingleIdIsHexadecimal", "ABC", {0xABC}, {0xABB, 0xABD, 0}},
        IdCase{"LowerCaseDigits", "abc", {0xABC}, {0xABB}}, IdCase{"UnreadableTextAddsNothing", "XYZ", some, {}},
        IdCase{"UnreadablePartIsSkipped", "XYZ,123", {0x123}, {0x124}}, IdCase{"PrefixIsNoDigit", "0x123", some, {}},
        IdCase{"SignIsNoDigit", "+123", some, {}},
        IdCase{"BlanksAroundParts", "  123 ,  124  ", {0x123, 0x124}, {0x122, 0x125}},
        IdCase{"EmptyPartsAreDropped", ",,123,,", {0x123}, {0x124}}, IdCase{"BlankPartsAddNothing", " , ", some, {}},
        IdCase{"LargestId", "FFFFFFFF", {0xFFFFFFFF}, {0, 0xFFFFFFFE}},
        IdCase{"TooLargeIdAddsNothing", "100000000", some, {}}, IdCase{"LeadingZeros", "00000000123", {0x123}, {0x124}},
        IdCase{"Range", "100-200", {0x100, 0x180, 0x200}, {0xFF, 0x201}},
        IdCase{"RangeWithBlanks", "100 - 200", {0x100, 0x200}, {0xFF, 0x201}},
        IdCase{"RangeOfOne", "100-100", {0x100}, {0xFF, 0x101}}, IdCase{"FullRange", "0-FFFFFFFF", some, {}},
        IdCase{"BackwardRangeAddsNothing", "200-100", some, {}},
        IdCase{"ThreeBoundsAddNothing", "100-200-300", some, {}}, IdCase{"OpenRangeAddsNothing", "100-", some, {}},
        IdCase{"LeadingDashAddsNothing", "-100", some, {}}, IdCase{"UnreadableBoundAddsNothing", "100-2G0", some, {}},
        IdCase{"List", "100,200,300", {0x100, 0x200, 0x300}, {0x101, 0x2FF, 0}},
        IdCase{"ExcludedId", "!123", {0, 0x122, 0x124, 0x1FFFFFFF}, {0x123}},
        IdCase{"ExcludedIdWithBlank", "! 123", {0x122}, {0x123}},
        IdCase{"ExcludedRangeAddsNothing", "!100-200", some, {}}, IdCase{"LoneExclamationAddsNothing", "!", some, {}},
        IdCase{"IncludeFirstKeepsExcludedId", "100-200,!150,300", {0x100, 0x150, 0x200, 0x300}, {0x201, 0x2FF}},
        IdCase{"SameIdNamedAndExcluded", "123,!123", {0x123}, {0x122, 0x124}},
        IdCase{"ExcludeFirstHidesExcludedAlone", "!150,!160,100", {0x100, 0x151, 0x999}, {0x150, 0x160}},
        IdCase{"LaterPartOverridesInExcludeMode", "!123,100-200", {0x123, 0x100, 0x999}, {}},
        IdCase{"LaterExclusionOverridesRange", "!999,100-200,!150", {0x14F, 0x151, 0x100, 0x200}, {0x150, 0x999}},
        IdCase{"ExclusionAtRangeEnds", "!999,100-200,!100,!200", {0x101, 0x1FF}, {0x100, 0x200, 0x999}},
        IdCase{"UnreadablePartSetsNoMode", "XYZ,!123", {0x122}, {0x123}},
        IdCase{"OverlappingRanges", "100-200,180-280,0-FF", {0, 0x100, 0x200, 0x280}, {0x281}}),
    [](const auto &test) { return std::string(test.param.name); });

TEST(ViewIdFilterState, KnowsATextWithoutIds)
{
    TzViewIdFilter filter;
    EXPECT_FALSE(filter.hasText());
    EXPECT_TRUE(filter.isEmpty());
    filter.setText(QStringLiteral("XYZ"));
    EXPECT_TRUE(filter.hasText());
    EXPECT_TRUE(filter.isEmpty());
    filter.setText(QStringLiteral("12"));
    EXPECT_FALSE(filter.isEmpty());
    filter.setText({});
    EXPECT_FALSE(filter.hasText());
    EXPECT_TRUE(filter.passes(0x13)) << "an earlier list is forgotten";
}

TEST(ViewIdFilterState, AWideRangeCostsNothing)
{
    const auto start = std::chrono::steady_clock::now();
    TzViewIdFilter filter;
    filter.setText(QStringLiteral("0-1FFFFFFF"));
    EXPECT_TRUE(filter.passes(0x1FFFFFFF));
    EXPECT_FALSE(filter.passes(0x20000000));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1)); // one entry an ID would take minutes
}

// Against the plain reading of the rules, one entry for each identifier.
TEST(ViewIdFilterState, AgreesWithATableOfIds)
{
    constexpr std::uint32_t idCount = 64;
    std::uint32_t seed = 1;
    const auto next = [&seed](std::uint32_t bound) {
        seed = seed * 1664525 + 1013904223;
        return (seed >> 8) % bound;
    };
    for (int round = 0; round < 500; ++round) {
        std::vector<int> table(idCount, -1); // -1 not named, 0 excluded, 1 included
        int mode = -1;
        QStringList parts;
        for (std::uint32_t part = next(6); part > 0; --part) {
            const std::uint32_t first = next(idCount);
            const bool exclude = next(3) == 0;
            const std::uint32_t last = exclude ? first : first + next(idCount - first);
            parts << (exclude ? QStringLiteral("!%1").arg(first, 0, 16)
                              : QStringLiteral("%1-%2").arg(first, 0, 16).arg(last, 0, 16));
            if (mode == -1)
                mode = exclude ? 0 : 1;
            for (std::uint32_t id = first; id <= last; ++id)
                table[id] = exclude ? 0 : 1;
        }
        TzViewIdFilter filter;
        filter.setText(parts.join(u','));
        for (std::uint32_t id = 0; id < idCount; ++id) {
            const bool wanted = mode == -1 || (mode == 1 ? table[id] != -1 : table[id] != 0);
            ASSERT_EQ(filter.passes(id), wanted) << parts.join(u',').toStdString() << " id " << id;
        }
    }
}

} // namespace
