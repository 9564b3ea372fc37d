// SPDX-License-Identifier: GPL-3.0-or-later
// The parts that both text files are made of: times, texts, growing lines.
#include "logging/blf/BlfLineForm.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <string>

using namespace BLF;

namespace {

std::string timeOf(double seconds)
{
    std::array<char, Common::LineDigits::maxTimeLength> text{};
    return {text.data(), timeText(text.data(), seconds)};
}

std::string printed(double seconds)
{
    return QString::number(seconds, 'f', 6).toStdString();
}

TEST(BlfTime, HasSixDigitsAndIsRoundedToTheNearest)
{
    EXPECT_EQ(timeOf(0), "0.000000");
    EXPECT_EQ(timeOf(499e-9), "0.000000");
    EXPECT_EQ(timeOf(501e-9), "0.000001");
    EXPECT_EQ(timeOf(1.2345674), "1.234567");
    EXPECT_EQ(timeOf(1.2345676), "1.234568");
    EXPECT_EQ(timeOf(0.9999996), "1.000000") << "the carry reaches the seconds";
    EXPECT_EQ(timeOf(59.9999999), "60.000000");
}

TEST(BlfTime, ExactHalvesGoUpwards)
{
    EXPECT_EQ(timeOf(0.0078125), "0.007813");
    EXPECT_EQ(timeOf(0.0234375), "0.023438");
    EXPECT_EQ(timeOf(1.0078125), "1.007813");
}

TEST(BlfTime, LargeTimesAreThoseOfTheUnsignedStamp)
{
    EXPECT_EQ(timeOf(9223372036854775808.0 * 1e-9), "9223372036.854776");
    EXPECT_EQ(timeOf(18446744073709551615.0 * 1e-9), printed(18446744073709551615.0 * 1e-9));
}

TEST(BlfTime, AgreesWithThePrintedFormAtEveryMagnitude)
{
    std::mt19937_64 random(1); // NOLINT: the same numbers each time
    for (int shift = 0; shift < 64; ++shift) {
        for (int i = 0; i < 2000; ++i) {
            const double seconds = static_cast<double>(random() >> shift) * 1e-9;
            ASSERT_EQ(timeOf(seconds), printed(seconds)) << std::hexfloat << seconds;
        }
    }
}

TEST(BlfTime, AgreesWithThePrintedFormAroundHalfMicroseconds)
{
    for (std::uint64_t microsecond = 1; microsecond < std::uint64_t{1} << 53; microsecond = microsecond * 3 + 1) {
        const double half = static_cast<double>(microsecond * 1000 + 500) * 1e-9;
        for (const double seconds : {std::nextafter(half, 0.0), half, std::nextafter(half, 1e11)})
            ASSERT_EQ(timeOf(seconds), printed(seconds)) << std::hexfloat << seconds;
    }
}

TEST(BlfTime, WhatNoStampCanBeIsHeldWithinItsRange)
{
    EXPECT_EQ(timeOf(-1.5), "0.000000");
    EXPECT_EQ(timeOf(-0.0), "0.000000");
    EXPECT_EQ(timeOf(std::nan("")), "0.000000");
    const std::string last = timeOf(18446744073709551615.0 * 1e-9);
    EXPECT_EQ(timeOf(1e300), last);
    EXPECT_EQ(timeOf(std::numeric_limits<double>::infinity()), last);
    EXPECT_EQ(timeOf(-std::numeric_limits<double>::infinity()), "0.000000");
}

std::string utf8Of(const QString &text)
{
    std::string bytes(3 * static_cast<std::size_t>(text.size()) + 1, '\0');
    bytes.resize(static_cast<std::size_t>(utf8Text(bytes.data(), text) - bytes.data()));
    return bytes;
}

TEST(BlfUtf8, IsThatOfTheToolkitForEveryMixture)
{
    const std::array<QString, 7> texts{QString(),
                                       QStringLiteral("plain"),
                                       QString::fromUtf8("T\xC3\xBCr"),
                                       QString::fromUtf8("\xE2\x82\xAC at the beginning"),
                                       QString::fromUtf8("at the end \xF0\x9F\x9A\x97"),
                                       QString(QChar(0xD800)) + QLatin1Char('x'),
                                       QString(1000, QChar(0xFFFF))};
    for (const QString &text : texts)
        EXPECT_EQ(utf8Of(text), text.toUtf8().toStdString());
}

// A form whose line is nothing but the record's texts and payload.
class PlainForm final : public BlfLineForm
{
public:
    std::string header() const override { return {}; }
    std::string_view footer() const override { return {}; }

protected:
    char *line(char *out, const BlfFrame &frame) const override
    {
        out = utf8Text(utf8Text(out, frame.dir), frame.description);
        return payloadText(out, frame.data, Common::LineDigits::lowerHex);
    }
};

TEST(BlfLineForm, MakesRoomForRecordsOfAnySize)
{
    BlfFrame frame;
    frame.dir = QString(10'000, QChar(0x20AC));
    frame.description = QString(300'000, QChar(0xFFEE));
    frame.data = QByteArray(100'000, '\x5A');
    Common::LineBuffer buffer(16);
    PlainForm().append(frame, buffer);
    PlainForm().append(BlfFrame(), buffer);
    const std::string expected =
        (frame.dir + frame.description).toUtf8().toStdString() + frame.data.toHex(' ').toStdString() + "\n\n";
    EXPECT_TRUE(buffer.text() == expected);
}

} // namespace
