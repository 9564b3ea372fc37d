// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/text/Numbers.h"

#include <gtest/gtest.h>

#include <QLocale>

#include <cmath>

using namespace Common::Numbers;

namespace {

struct DoubleCase
{
    const char16_t *text;
    double value; // 0 where it is no number
};

class DatabaseNumber : public testing::TestWithParam<DoubleCase>
{
};

} // namespace

TEST_P(DatabaseNumber, IsReadAsADouble)
{
    EXPECT_EQ(doubleOrZero(QStringView(GetParam().text)), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(Texts, DatabaseNumber,
                         testing::Values(DoubleCase{u"0", 0.0}, DoubleCase{u"1.5", 1.5}, DoubleCase{u" -2.25\t", -2.25},
                                         DoubleCase{u"+3", 3.0}, DoubleCase{u".5", 0.5}, DoubleCase{u"5.", 5.0},
                                         DoubleCase{u"-3.4E+038", -3.4e38}, DoubleCase{u"1e-2", 0.01},
                                         DoubleCase{u"18446744073709551615", 18446744073709551615.0},
                                         DoubleCase{u"1e999", 0.0}, DoubleCase{u"inf", 0.0}, DoubleCase{u"-inf", 0.0},
                                         DoubleCase{u"nan", 0.0}, DoubleCase{u"", 0.0}, DoubleCase{u"+", 0.0},
                                         DoubleCase{u"--1", 0.0}, DoubleCase{u"+-1", 0.0}, DoubleCase{u"1,5", 0.0},
                                         DoubleCase{u"0x10", 0.0}, DoubleCase{u"1 2", 0.0}, DoubleCase{u"5m", 0.0},
                                         DoubleCase{u"\u0665", 0.0}));

TEST(DatabaseNumbers, ALongNumberIsReadWhole)
{
    const QString text = QStringLiteral("1.") + QString(200, u'0') + u'1';
    EXPECT_EQ(readDouble(text), 1.0);
}

TEST(DatabaseNumbers, TheUsersLocaleDoesNotMatter)
{
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German));
    EXPECT_EQ(doubleOrZero(u"1.5"), 1.5);
    EXPECT_EQ(integerOrZero<int>(u"1.000"), 0);
    QLocale::setDefault(before);
}

TEST(DatabaseNumbers, IntegersBeyondTheirTypeAreNone)
{
    EXPECT_EQ(readInteger<std::uint32_t>(u"4294967295"), 4294967295U);
    EXPECT_EQ(readInteger<std::uint32_t>(u"4294967296"), std::nullopt);
    EXPECT_EQ(readInteger<std::uint16_t>(u"65536"), std::nullopt);
    EXPECT_EQ(readInteger<std::int32_t>(u"-2147483648"), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(readInteger<std::int32_t>(u"-2147483649"), std::nullopt);
    EXPECT_EQ(readInteger<std::int64_t>(u"-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(readInteger<std::uint64_t>(u"18446744073709551615"), std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(readInteger<std::uint64_t>(u"18446744073709551616"), std::nullopt);
    EXPECT_EQ(readInteger<std::uint32_t>(u"-1"), std::nullopt);
    EXPECT_EQ(integerOrZero<std::uint32_t>(QString(5000, u'9')), 0U);
}

TEST(DatabaseNumbers, IntegersTakeSignsAndBlanksAndNothingElse)
{
    EXPECT_EQ(readInteger<int>(u" +7 "), 7);
    EXPECT_EQ(readInteger<int>(u"-7"), -7);
    EXPECT_EQ(readInteger<int>(u"007"), 7);
    for (const QStringView text : {QStringView(u""), QStringView(u"7x"), QStringView(u"--7"), QStringView(u"+-7"),
                                   QStringView(u"0x7"), QStringView(u"7.0"), QStringView(u"-")})
        EXPECT_EQ(readInteger<int>(text), std::nullopt) << text.toString().toStdString();
}

TEST(DatabaseNumbers, HexadecimalIntegersMayBearAPrefix)
{
    EXPECT_EQ(readInteger<int>(u"0x1F", 16), 31);
    EXPECT_EQ(readInteger<int>(u"1f", 16), 31);
    EXPECT_EQ(readInteger<int>(u"0x", 16), std::nullopt);
    EXPECT_EQ(readInteger<int>(u"0x-1", 16), std::nullopt);
}
