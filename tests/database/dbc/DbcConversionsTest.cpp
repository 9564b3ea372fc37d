// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcConversions.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr std::uint64_t allBits = ~std::uint64_t{0};
constexpr std::uint64_t topBit = std::uint64_t{1} << 63U;

DbcSignal integerSignal(unsigned size, bool isSigned, double factor = 1.0, double offset = 0.0)
{
    DbcSignal signal;
    signal.size = static_cast<std::uint16_t>(size);
    signal.isSigned = isSigned;
    signal.factor = factor;
    signal.offset = offset;
    return signal;
}

DbcSignal floatSignal(std::uint8_t valueType)
{
    DbcSignal signal = integerSignal(valueType == 1 ? 32 : 64, true, 3.0, 100.0); // both must have no effect
    signal.valueType = valueType;
    return signal;
}

double physicalOf(DbcSignal signal, std::uint64_t raw)
{
    signal.value = raw;
    return getSignalPhysicalValue(signal);
}

struct IntegerCase
{
    const char *name;
    unsigned size;
    bool isSigned;
    std::uint64_t raw;
    double physical;
};
class DbcIntegers : public testing::TestWithParam<IntegerCase>
{
};

TEST_P(DbcIntegers, RawToPhysical)
{
    const IntegerCase &param = GetParam();
    EXPECT_EQ(physicalOf(integerSignal(param.size, param.isSigned), param.raw), param.physical);
}

TEST_P(DbcIntegers, PhysicalToRaw)
{
    const IntegerCase &param = GetParam();
    EXPECT_EQ(physicalToRawValue(param.physical, integerSignal(param.size, param.isSigned)), param.raw);
}

INSTANTIATE_TEST_SUITE_P(
    Sizes, DbcIntegers,
    testing::Values(IntegerCase{"OneBitUnsigned", 1, false, 1, 1.0}, IntegerCase{"OneBitSigned", 1, true, 1, -1.0},
                    IntegerCase{"Zero", 8, true, 0, 0.0}, IntegerCase{"HighestSigned8", 8, true, 0x7F, 127.0},
                    IntegerCase{"LowestSigned8", 8, true, 0x80, -128.0},
                    IntegerCase{"MinusOneOf12", 12, true, 0xFFF, -1.0},
                    IntegerCase{"HighestUnsigned12", 12, false, 0xFFF, 4095.0},
                    IntegerCase{"MinusOneOf63", 63, true, allBits >> 1U, -1.0},
                    IntegerCase{"LowestSigned64", 64, true, topBit, -0x1p63},
                    IntegerCase{"MinusOneOf64", 64, true, allBits, -1.0},
                    IntegerCase{"TopBitUnsigned64", 64, false, topBit, 0x1p63},
                    IntegerCase{"AboveTopBitUnsigned64", 64, false, 0xFFFF'FFFF'FFFF'F800, 0x1.fffffffffffffp63}),
    [](const auto &test) { return std::string(test.param.name); });

struct ToRawCase
{
    const char *name;
    double physical;
    unsigned size;
    bool isSigned;
    std::uint64_t raw;
};
class DbcPhysicalToRaw : public testing::TestWithParam<ToRawCase>
{
};

TEST_P(DbcPhysicalToRaw, GivesADefinedValue)
{
    const ToRawCase &param = GetParam();
    EXPECT_EQ(physicalToRawValue(param.physical, integerSignal(param.size, param.isSigned)), param.raw);
}

INSTANTIATE_TEST_SUITE_P(Edges, DbcPhysicalToRaw,
                         testing::Values(ToRawCase{"NotANumberUnsigned", notANumber, 16, false, 0},
                                         ToRawCase{"NotANumberSigned", notANumber, 16, true, 0},
                                         ToRawCase{"InfinityUnsigned", infinity, 64, false, allBits},
                                         ToRawCase{"InfinitySigned", infinity, 64, true, topBit - 1},
                                         ToRawCase{"MinusInfinityUnsigned", -infinity, 64, false, topBit},
                                         ToRawCase{"MinusInfinitySigned", -infinity, 64, true, topBit},
                                         ToRawCase{"TwoTo64Unsigned", 0x1p64, 64, false, allBits},
                                         ToRawCase{"TwoTo63Signed", 0x1p63, 64, true, topBit - 1},
                                         ToRawCase{"BelowMinusTwoTo63Signed", -0x1.0000000000001p63, 64, true, topBit},
                                         ToRawCase{"SignedSaturatesBeforeItIsCut", 1e30, 8, true, 0xFF},
                                         ToRawCase{"SignedIsCutToItsSize", 1000.0, 8, true, 0xE8},
                                         ToRawCase{"UnsignedIsNotCut", 1000.0, 8, false, 1000},
                                         ToRawCase{"NegativeUnsignedIsTwosComplement", -1.0, 8, false, allBits},
                                         ToRawCase{"HalfRoundsAwayFromZero", 2.5, 8, false, 3},
                                         ToRawCase{"NegativeHalfRoundsAwayFromZero", -2.5, 8, true, 0xFD},
                                         ToRawCase{"BelowHalfRoundsToZero", 0.49999999999999994, 8, false, 0},
                                         ToRawCase{"SignedWithoutSize", 5.0, 0, true, 0},
                                         ToRawCase{"SignedTooLong", 5.0, 65, true, 0},
                                         ToRawCase{"UnsignedWithoutSize", 5.0, 0, false, 5},
                                         ToRawCase{"UnsignedTooLong", 5.0, 65, false, 5}),
                         [](const auto &test) { return std::string(test.param.name); });

TEST(DbcConversions, ScaleGoesBothWays)
{
    const DbcSignal signal = integerSignal(12, false, 0.1, -40.0);
    EXPECT_DOUBLE_EQ(physicalOf(signal, 1234), 83.4);
    EXPECT_EQ(physicalToRawValue(83.4, signal), 1234U);
    const DbcSignal falling = integerSignal(8, true, -2.0, 10.0);
    EXPECT_EQ(physicalOf(falling, 0xFE), 14.0);
    EXPECT_EQ(physicalToRawValue(14.0, falling), 0xFEU);
}

TEST(DbcConversions, AFactorOfZeroTakesTheOffsetAlone)
{
    const DbcSignal signal = integerSignal(8, false, 0.0, 10.0);
    EXPECT_EQ(physicalToRawValue(17.0, signal), 7U);
    EXPECT_EQ(physicalOf(signal, 7), 10.0);
    EXPECT_EQ(physicalToRawValue(17.0, integerSignal(8, false, -0.0, 10.0)), 7U);
}

TEST(DbcConversions, AScaleThatIsNoNumberGivesZero)
{
    EXPECT_EQ(physicalToRawValue(1.0, integerSignal(8, false, notANumber)), 0U);
    EXPECT_EQ(physicalToRawValue(infinity, integerSignal(8, true, 1.0, infinity)), 0U);
    EXPECT_EQ(physicalToRawValue(infinity, integerSignal(8, true, infinity)), 0U);
}

TEST(DbcConversions, AnUnknownValueTypeIsAnInteger)
{
    DbcSignal signal = integerSignal(8, true);
    signal.valueType = 3;
    EXPECT_FALSE(isFloatSignal(signal));
    EXPECT_EQ(physicalOf(signal, 0xFF), -1.0);
}

TEST(DbcConversions, OnlyTheSignBitExtends)
{
    EXPECT_EQ(physicalOf(integerSignal(8, true), 0x17F), 383.0); // bits above the signal stay as they are
    EXPECT_EQ(physicalOf(integerSignal(8, true), 0x1FF), -1.0);
    EXPECT_EQ(physicalOf(integerSignal(8, true), topBit), 0x1p63);
    EXPECT_EQ(physicalOf(integerSignal(65, true), allBits), 0x1p64);
    EXPECT_EQ(physicalOf(integerSignal(0, true), allBits), 0x1p64);
}

TEST(DbcConversions, Float32IsTheLowHalfAndUnscaled)
{
    const DbcSignal signal = floatSignal(1);
    EXPECT_TRUE(isFloatSignal(signal));
    EXPECT_EQ(physicalOf(signal, 0xDEAD'BEEF'3FC0'0000), 1.5);
    EXPECT_EQ(physicalToRawValue(1.5, signal), 0x3FC0'0000U);
    EXPECT_EQ(physicalToRawValue(-0.0, signal), 0x8000'0000U);
    EXPECT_EQ(physicalToRawValue(0.1, signal), std::bit_cast<std::uint32_t>(0.1F)); // the nearest
    EXPECT_EQ(physicalToRawValue(1e300, signal), 0x7F80'0000U);
    EXPECT_EQ(physicalToRawValue(-infinity, signal), 0xFF80'0000U);
    EXPECT_EQ(physicalToRawValue(1e-300, signal), 0U);
    EXPECT_TRUE(std::isnan(physicalOf(signal, physicalToRawValue(notANumber, signal))));
}

TEST(DbcConversions, Float64IsTheBitsAndUnscaled)
{
    const DbcSignal signal = floatSignal(2);
    EXPECT_TRUE(isFloatSignal(signal));
    for (const double number : {0.0, 1.5, -1e300, 5e-324, infinity}) {
        EXPECT_EQ(physicalToRawValue(number, signal), std::bit_cast<std::uint64_t>(number));
        EXPECT_EQ(physicalOf(signal, std::bit_cast<std::uint64_t>(number)), number);
    }
    EXPECT_TRUE(std::isnan(physicalOf(signal, physicalToRawValue(notANumber, signal))));
}

TEST(DbcConversions, PhysicalRangeHoldsItsLimits)
{
    DbcSignal signal;
    signal.minimum = -1.5;
    signal.maximum = 2.0;
    for (const double inside : {-1.5, 0.0, 2.0})
        EXPECT_TRUE(isPhysicalInRange(inside, signal)) << inside;
    for (const double outside : {-1.6, 2.1, infinity, -infinity, notANumber})
        EXPECT_FALSE(isPhysicalInRange(outside, signal)) << outside;
}

struct RawRangeCase
{
    const char *name;
    std::uint64_t raw;
    unsigned size;
    bool isSigned;
    bool inRange;
};
class DbcRawRange : public testing::TestWithParam<RawRangeCase>
{
};

TEST_P(DbcRawRange, IsToldBySize)
{
    const RawRangeCase &param = GetParam();
    EXPECT_EQ(isRawInRange(param.raw, integerSignal(param.size, param.isSigned)), param.inRange);
}

INSTANTIATE_TEST_SUITE_P(
    Edges, DbcRawRange,
    testing::Values(
        RawRangeCase{"WithoutSize", 0, 0, false, false}, RawRangeCase{"TooLong", 0, 65, false, false},
        RawRangeCase{"TooLongSigned", 0, 128, true, false}, RawRangeCase{"AnythingIn64", allBits, 64, false, true},
        RawRangeCase{"AnythingInSigned64", topBit, 64, true, true},
        RawRangeCase{"HighestUnsigned8", 0xFF, 8, false, true}, RawRangeCase{"AboveUnsigned8", 0x100, 8, false, false},
        RawRangeCase{"HighestUnsigned63", allBits >> 1U, 63, false, true},
        RawRangeCase{"AboveUnsigned63", topBit, 63, false, false}, RawRangeCase{"HighestSigned8", 0x7F, 8, true, true},
        RawRangeCase{"NegativeWithinItsBits", 0x80, 8, true, true},
        RawRangeCase{"NegativeExtended", allBits, 8, true, true}, RawRangeCase{"AboveSigned8", 0x17F, 8, true, false},
        RawRangeCase{"BelowSigned8", topBit, 8, true, false}, RawRangeCase{"OneBitSigned", 1, 1, true, true},
        RawRangeCase{"TwoInOneBit", 2, 1, true, false}),
    [](const auto &test) { return std::string(test.param.name); });

QString textOf(DbcSignal signal, std::uint64_t raw)
{
    signal.value = raw;
    return formatSignalValue(signal);
}

TEST(DbcSignalText, ADescriptionComesWithTheRawValue)
{
    DbcSignal signal = integerSignal(8, true, 0.5);
    signal.valueDescriptions = {{3, QStringLiteral("Open")}, {0xFF, QStringLiteral("%1 n/a")}};
    EXPECT_EQ(textOf(signal, 3), QStringLiteral("3 - Open"));
    EXPECT_EQ(textOf(signal, 0xFF), QStringLiteral("255 - %1 n/a")); // raw, unsigned, and the text as it stands
    EXPECT_EQ(textOf(signal, 4), QStringLiteral("2"));
}

TEST(DbcSignalText, DescriptionsAreFoundByTheLow32Bits)
{
    DbcSignal signal = integerSignal(64, false);
    signal.valueDescriptions = {{1, QStringLiteral("On")}};
    EXPECT_EQ(textOf(signal, 0x1'0000'0001), QStringLiteral("4294967297 - On"));
}

TEST(DbcSignalText, PhysicalValuesHaveTenDigits)
{
    EXPECT_EQ(textOf(integerSignal(16, false, 0.1), 12345), QStringLiteral("1234.5"));
    EXPECT_EQ(textOf(integerSignal(64, false), 12345678901234), QStringLiteral("1.23456789e+13"));
    EXPECT_EQ(textOf(integerSignal(8, true), 0x80), QStringLiteral("-128"));
    EXPECT_EQ(textOf(integerSignal(64, true), allBits), QStringLiteral("-1"));
    EXPECT_EQ(textOf(floatSignal(1), 0x3DCC'CCCD), QStringLiteral("0.1000000015"));
}

} // namespace
