// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfConversions.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <memory>

namespace {

LdfSignal makeSignal(const char *name, int startBit, int size, std::uint64_t value = 0)
{
    LdfSignal signal;
    signal.name = QString::fromLatin1(name);
    signal.startBit = static_cast<std::uint16_t>(startBit);
    signal.size = static_cast<std::uint16_t>(size);
    signal.value = value;
    return signal;
}

LdfFrame makeFrame(int size, std::initializer_list<LdfSignal> frameSignals)
{
    LdfFrame frame;
    frame.size = static_cast<std::uint8_t>(size);
    for (const LdfSignal &signal : frameSignals)
        frame.signals[signal.name] = signal;
    return frame;
}

LdfSignal withEncoding(std::initializer_list<LdfPhysicalRange> ranges, std::uint64_t value = 0,
                       const std::map<std::uint32_t, QString> &logicalValues = {})
{
    auto encoding = std::make_shared<LdfEncoding>();
    for (const LdfPhysicalRange &range : ranges)
        encoding->physicalRanges[range.maxRaw] = range;
    encoding->logicalValues = logicalValues;
    LdfSignal signal = makeSignal("S", 0, 16, value);
    signal.encoding = encoding;
    return signal;
}

TEST(LdfEncodeFrame, PutsSignalsInLittleEndianOrder)
{
    const LdfFrame frame = makeFrame(3, {makeSignal("A", 0, 4, 0xF5), makeSignal("B", 4, 12, 0xABC)});
    EXPECT_EQ(encodeFrame(frame), QByteArray::fromHex("C5AB00"));
}

TEST(LdfEncodeFrame, IsEmptyWithoutSizeOrWhereASignalDoesNotFit)
{
    EXPECT_TRUE(encodeFrame(makeFrame(0, {})).isEmpty());
    EXPECT_TRUE(encodeFrame(makeFrame(1, {makeSignal("A", 4, 8)})).isEmpty());
    EXPECT_TRUE(encodeFrame(makeFrame(1, {makeSignal("A", 65535, 1)})).isEmpty());
    EXPECT_TRUE(encodeFrame(makeFrame(8, {makeSignal("A", 0, 0)})).isEmpty());
    EXPECT_TRUE(encodeFrame(makeFrame(255, {makeSignal("A", 0, 65)})).isEmpty());
}

TEST(LdfEncodeFrame, WritesToABufferAndLeavesWhatLiesBehind)
{
    const LdfFrame frame = makeFrame(1, {makeSignal("A", 0, 8, 0x12)});
    std::array<std::uint8_t, 2> buffer{0xEE, 0xEE};
    EXPECT_EQ(encodeFrame(frame, buffer.data(), buffer.size()), 0);
    EXPECT_EQ(buffer, (std::array<std::uint8_t, 2>{0x12, 0xEE}));
    EXPECT_EQ(encodeFrame(frame, nullptr, 2), -1);
    EXPECT_EQ(encodeFrame(frame, buffer.data(), 0), -1);
    EXPECT_EQ(encodeFrame(makeFrame(2, {}), buffer.data(), 1), -1);
    EXPECT_EQ(encodeFrame(makeFrame(0, {}), buffer.data(), 2), -1);
    EXPECT_EQ(encodeFrame(makeFrame(1, {makeSignal("A", 1, 8)}), buffer.data(), 2), -1);
    EXPECT_EQ(buffer[0], 0x12);
}

TEST(LdfDecodeFrame, ReadsEverySignal)
{
    LdfFrame frame = makeFrame(2, {makeSignal("A", 0, 4), makeSignal("B", 4, 12), makeSignal("Beyond", 100, 8, 7),
                                   makeSignal("TooLong", 0, 65, 7)});
    const std::array<std::uint8_t, 2> data{0xC5, 0xAB};
    EXPECT_EQ(decodeFrame(data.data(), data.size(), frame), 0U);
    EXPECT_EQ(frame.signals[QStringLiteral("A")].value, 5U);
    EXPECT_EQ(frame.signals[QStringLiteral("B")].value, 0xABCU);
    EXPECT_EQ(frame.signals[QStringLiteral("Beyond")].value, 0U);
    EXPECT_EQ(frame.signals[QStringLiteral("TooLong")].value, 0U);
}

TEST(LdfDecodeFrame, RefusesMissingOrShortData)
{
    LdfFrame frame = makeFrame(2, {makeSignal("A", 0, 4, 9)});
    const std::array<std::uint8_t, 300> data{};
    EXPECT_EQ(decodeFrame(nullptr, 2, frame), ldfDecodeFailed);
    EXPECT_EQ(decodeFrame(data.data(), 0, frame), ldfDecodeFailed);
    EXPECT_EQ(decodeFrame(data.data(), 1, frame), ldfDecodeFailed);
    EXPECT_EQ(frame.signals[QStringLiteral("A")].value, 9U);
    EXPECT_EQ(decodeFrame(data.data(), data.size(), frame), 0U);
    EXPECT_EQ(frame.signals[QStringLiteral("A")].value, 0U);
}

TEST(LdfFramePeriod, ComesFromTheTablesOrTheType)
{
    LdfFrame frame;
    EXPECT_EQ(getFramePeriod(frame), 100.0);
    frame.maxPeriod = 30.0;
    EXPECT_EQ(getFramePeriod(frame), 100.0);
    frame.type = LdfFrameType::eventTriggered;
    EXPECT_EQ(getFramePeriod(frame), 30.0);
    frame.maxPeriod = 0.0;
    EXPECT_EQ(getFramePeriod(frame), 100.0);
    frame.type = LdfFrameType::sporadic;
    EXPECT_EQ(getFramePeriod(frame), 0.0);
    frame.minPeriod = 12.5;
    EXPECT_EQ(getFramePeriod(frame), 12.5);
    frame.type = LdfFrameType::diagnostic;
    frame.minPeriod = 0.0;
    EXPECT_EQ(getFramePeriod(frame), 100.0);
}

struct InitialCase
{
    const char *name;
    const char *text;
    int size;
    std::uint64_t raw;
};
class LdfInitialValue : public testing::TestWithParam<InitialCase>
{
};

TEST_P(LdfInitialValue, ReadsAs)
{
    EXPECT_EQ(rawInitialValue(QString::fromLatin1(GetParam().text), static_cast<std::uint16_t>(GetParam().size)),
              GetParam().raw);
}
INSTANTIATE_TEST_SUITE_P(
    Texts, LdfInitialValue,
    testing::Values(InitialCase{"Decimal", "255", 8, 255}, InitialCase{"Hex", "0x10", 8, 0},
                    InitialCase{"Negative", "-1", 8, 0}, InitialCase{"Empty", "", 8, 0},
                    InitialCase{"Fraction", "1.5", 8, 0},
                    InitialCase{"Largest", "18446744073709551615", 64, 0xFFFF'FFFF'FFFF'FFFFU},
                    InitialCase{"BeyondSixtyFourBits", "18446744073709551616", 64, 0},
                    InitialCase{"OneTwoOfSixteenBitsIs0x0201", "{1, 2}", 16, 0x0201},
                    InitialCase{"FivePartsOfSixteenBitsAreThreeBitsWide", "{1, 2, 3, 4, 5}", 16,
                                1U | (2U << 3) | (3U << 6) | (4U << 9) | (5U << 12)},
                    InitialCase{"PartsAreMasked", "{257, 2}", 16, 0x0201}, InitialCase{"NoPart", "{}", 16, 0},
                    InitialCase{"EmptyPartsAreDropped", "{1,,2}", 16, 0x0201},
                    InitialCase{"EmptyPartsAtTheEndsAreDropped", "{,1,2,,}", 16, 0x0201},
                    InitialCase{"CommasAlone", "{,,}", 16, 0},
                    InitialCase{"BlankPartIsZeroInItsPlace", "{ ,2}", 16, 0x0200},
                    InitialCase{"BracesWithinAreDropped", "{1,{2}", 16, 0x0201},
                    InitialCase{"UnreadablePartIsZeroInItsPlace", "{1, x, 3}", 24, 0x030001},
                    InitialCase{"WidthAboveEight", "{1, 2}", 18, 0}, InitialCase{"WidthZero", "{1, 2, 3}", 2, 0},
                    InitialCase{"WidthWrapsAtEightBits", "{3}", 257, 1}, InitialCase{"SizeZero", "{1}", 0, 0},
                    InitialCase{"ShiftOfSixtyFourAddsNothing", "{1,2,3,4,5,6,7,8,9,10}", 80, 0x0807'0605'0403'0201U}),
    [](const auto &test) { return std::string(test.param.name); });

TEST(LdfFormatSignalValue, WithoutEncodingIsTheRawValue)
{
    EXPECT_EQ(formatSignalValue(makeSignal("S", 0, 64, 0xFFFF'FFFF'FFFF'FFFFU)),
              QStringLiteral("18446744073709551615"));
    const LdfSignal signal = withEncoding({}, 3); // or with nothing in it
    EXPECT_EQ(formatSignalValue(signal), QStringLiteral("3"));
    EXPECT_TRUE(getSignalUnit(signal).isEmpty());
}

TEST(LdfFormatSignalValue, ShowsLogicalValuesFirst)
{
    const LdfSignal signal =
        withEncoding({{0, 255, 0.5, -10.0, QStringLiteral("V")}}, 0x10003, {{3, QStringLiteral("%1 stays")}});
    EXPECT_EQ(formatSignalValue(signal), QStringLiteral("3 - %1 stays")); // by the low 16 bits
}

TEST(LdfFormatSignalValue, ScalesBySixDigits)
{
    EXPECT_EQ(formatSignalValue(withEncoding({{0, 255, 0.5, -10.0, QStringLiteral("%2 V")}}, 41)),
              QStringLiteral("10.5 %2 V"));
    EXPECT_EQ(formatSignalValue(withEncoding({{0, 255, 1.0, 0.0, QStringLiteral("rpm")}}, 12345678)),
              QStringLiteral("1.23457e+07 rpm"));
    EXPECT_EQ(formatSignalValue(withEncoding({{0, 255, 1.0, 0.0, QString()}}, 7)), QStringLiteral("7 "));
}

TEST(LdfFormatSignalValue, OfSeveralRangesOnlyTheUpperEndSelectsItsOwn)
{
    const std::initializer_list<LdfPhysicalRange> ranges{{0, 100, 1.0, 0.0, QStringLiteral("a")},
                                                         {101, 200, 2.0, 0.0, QStringLiteral("b")}};
    EXPECT_EQ(formatSignalValue(withEncoding(ranges, 100)), QStringLiteral("100 a"));
    EXPECT_EQ(formatSignalValue(withEncoding(ranges, 150)), QStringLiteral("150 a"));
    EXPECT_EQ(formatSignalValue(withEncoding(ranges, 200)), QStringLiteral("400 b"));
    EXPECT_EQ(formatSignalValue(withEncoding(ranges, 5)), QStringLiteral("5 a"));
    EXPECT_EQ(formatSignalValue(withEncoding(ranges, 201)), QStringLiteral("201 a"));
    EXPECT_EQ(getSignalUnit(withEncoding(ranges, 200)), QStringLiteral("b"));
    EXPECT_EQ(getSignalUnit(withEncoding(ranges, 150)), QStringLiteral("a"));
}

TEST(LdfSignalRangeOf, WrapsAtSixtyFourBits)
{
    EXPECT_EQ(getSignalRange(makeSignal("S", 0, 8)).maximum, 255.0);
    EXPECT_EQ(getSignalRange(makeSignal("S", 0, 0)).maximum, 0.0);
    EXPECT_EQ(getSignalRange(makeSignal("S", 0, 64)).maximum, 0.0);
    EXPECT_EQ(getSignalRange(makeSignal("S", 0, 65)).maximum, 1.0);
    EXPECT_EQ(getSignalRange(makeSignal("S", 0, 63)).minimum, 0.0);
    const LdfSignalRange limits = getSignalRange(withEncoding({{0, 1, 1.0, 0.0, {}}}));
    EXPECT_EQ(limits.minimum, -1.7976931348623157e308);
    EXPECT_EQ(limits.maximum, 1.7976931348623157e308);
}

TEST(LdfSignalValueValid, RawValuesReachTheTrueMaximum)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const LdfSignal byte = makeSignal("S", 0, 8);
    EXPECT_TRUE(isSignalValueValid(0.0, byte));
    EXPECT_TRUE(isSignalValueValid(255.0, byte));
    EXPECT_FALSE(isSignalValueValid(255.5, byte));
    EXPECT_FALSE(isSignalValueValid(256.0, byte));
    EXPECT_FALSE(isSignalValueValid(-0.5, byte));
    EXPECT_FALSE(isSignalValueValid(nan, byte));
    const LdfSignal wide = makeSignal("S", 0, 64);
    EXPECT_TRUE(isSignalValueValid(18446744073709549568.0, wide));
    EXPECT_FALSE(isSignalValueValid(18446744073709551616.0, wide));
    EXPECT_FALSE(isSignalValueValid(1e300, makeSignal("S", 0, 65535)));
    EXPECT_TRUE(isSignalValueValid(0.0, makeSignal("S", 0, 0)));
    EXPECT_FALSE(isSignalValueValid(1.0, makeSignal("S", 0, 0)));
    EXPECT_FALSE(isSignalValueValid(std::ldexp(1.0, 53), makeSignal("S", 0, 53)));
    EXPECT_TRUE(isSignalValueValid(std::ldexp(1.0, 53) - 1.0, makeSignal("S", 0, 53)));
}

TEST(LdfSignalValueValid, PhysicalValuesLieInARangeOrNameALogicalValue)
{
    // -40 to 10, turned round by the factor
    const LdfSignal signal = withEncoding({{0, 100, -0.5, 10.0, {}}}, 0, {{250, QStringLiteral("error")}});
    EXPECT_TRUE(isSignalValueValid(-40.0, signal));
    EXPECT_TRUE(isSignalValueValid(10.0, signal));
    EXPECT_FALSE(isSignalValueValid(10.1, signal));
    EXPECT_FALSE(isSignalValueValid(-40.1, signal));
    EXPECT_TRUE(isSignalValueValid(250.9, signal));
    EXPECT_FALSE(isSignalValueValid(251.0, signal));
    EXPECT_FALSE(isSignalValueValid(1e30, signal));
    EXPECT_FALSE(isSignalValueValid(std::numeric_limits<double>::quiet_NaN(), signal));
    EXPECT_FALSE(isSignalValueValid(std::numeric_limits<double>::infinity(), signal));
}

TEST(LdfSortedSignals, ByStartBitNameOrSize)
{
    LdfFrame frame =
        makeFrame(4, {makeSignal("A", 16, 8), makeSignal("B", 0, 16), makeSignal("C", 24, 1), makeSignal("D", 0, 8)});
    const auto names = [](const auto &sorted) {
        QString text;
        for (const LdfSignal *signal : sorted)
            text += signal->name;
        return text;
    };
    EXPECT_EQ(names(getSortedSignals(std::as_const(frame))), QStringLiteral("BDAC"));
    EXPECT_EQ(names(getSortedSignals(frame, LdfSignalOrder::name)), QStringLiteral("ABCD"));
    EXPECT_EQ(names(getSortedSignals(frame, LdfSignalOrder::size)), QStringLiteral("CADB"));
    getSortedSignals(frame).front()->value = 5;
    EXPECT_EQ(frame.signals[QStringLiteral("B")].value, 5U);
}

TEST(LdfSignalCopies, KeepTheirEncodingWhateverBecomesOfTheOriginal)
{
    LdfSignal original = withEncoding({{0, 1, 1.0, 0.0, QStringLiteral("V")}});
    const LdfSignal copy = original;
    EXPECT_EQ(copy.encoding, original.encoding); // however many copies there are, the record is there once
    auto changed = std::make_shared<LdfEncoding>(*original.encoding);
    changed->physicalRanges[1].unit = QStringLiteral("A");
    original.encoding = changed;
    EXPECT_EQ(getSignalUnit(original), QStringLiteral("A"));
    EXPECT_EQ(getSignalUnit(copy), QStringLiteral("V"));
    original = LdfSignal();
    EXPECT_EQ(getSignalUnit(copy), QStringLiteral("V"));
}

} // namespace
