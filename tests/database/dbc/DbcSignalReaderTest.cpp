// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/Utils.h"
#include "database/dbc/DbcOccupiedBits.h"
#include "database/dbc/DbcOverlapCheck.h"
#include "tests/database/dbc/DbcFixture.h"

#include <algorithm>
#include <cstdint>
#include <random>
#include <set>
#include <unordered_set>

namespace {

using DbcSignals = DbcFixture;

} // namespace

TEST_F(DbcSignals, AllFieldsAreRead)
{
    ASSERT_TRUE(parseSignals("  SG_ Speed m3 :  7|16@0-  (0.5,-40) [-100|200.5]  \"km/h\"  Ecu,Other Vector__XXX"));
    const DbcSignal &read = signal();
    EXPECT_EQ(read.name, QStringLiteral("Speed"));
    EXPECT_FALSE(read.isMultiplexor);
    EXPECT_TRUE(read.isMultiplexed);
    EXPECT_EQ(read.multiplexValue, 3);
    EXPECT_EQ(read.startBit, 7);
    EXPECT_EQ(read.size, 16);
    EXPECT_TRUE(read.isBigEndian);
    EXPECT_TRUE(read.isSigned);
    EXPECT_EQ(read.factor, 0.5);
    EXPECT_EQ(read.offset, -40.0);
    EXPECT_EQ(read.minimum, -100.0);
    EXPECT_EQ(read.maximum, 200.5);
    EXPECT_EQ(read.unit, QStringLiteral("km/h"));
    EXPECT_EQ(read.receivers,
              (QStringList{QStringLiteral("Ecu"), QStringLiteral("Other"), QStringLiteral("Vector__XXX")}));
    EXPECT_EQ(read.value, 0U);
    EXPECT_TRUE(log.has(debug, "Added new receiver node Other for signal Speed"));
    EXPECT_EQ(model.nodes.size(), 2U);
}

TEST_F(DbcSignals, MultiplexMarks)
{
    ASSERT_TRUE(parseSignals("SG_ A M : 0|8@1+ (1,0) [0|1] \"\" Ecu\nSG_ B m3M : 8|8@1+ (1,0) [0|1] \"\" Ecu\n"
                             "SG_ C x : 16|8@1+ (1,0) [0|1] \"\" Ecu\nSG_ D m : 24|8@1+ (1,0) [0|1] \"\" Ecu"));
    const auto &read = model.messages.at(0).signals;
    ASSERT_EQ(read.size(), 4U);
    EXPECT_TRUE(read[0].isMultiplexor && !read[0].isMultiplexed);
    EXPECT_TRUE(read[1].isMultiplexed && !read[1].isMultiplexor);
    EXPECT_EQ(read[1].multiplexValue, -1);
    EXPECT_FALSE(read[2].isMultiplexor || read[2].isMultiplexed);
    EXPECT_TRUE(read[3].isMultiplexed);
    EXPECT_EQ(read[3].multiplexValue, -1);
}

TEST_F(DbcSignals, AMultiplexNumberTooLargeCountsAsNone)
{
    ASSERT_TRUE(parseSignals("SG_ A m99999999999 : 0|8@1+ (1,0) [0|1] \"\" Ecu"));
    EXPECT_TRUE(signal().isMultiplexed);
    EXPECT_EQ(signal().multiplexValue, -1);
}

TEST_F(DbcSignals, LinesThatCannotBeReadAreSkipped)
{
    ASSERT_TRUE(parseSignals("SG_ A 0|8@1+\nSG_ : 0|8@1+ (1,0) [0|1] \"\" Ecu\nSG_ C : 0|8@2+ (1,0) [0|1] \"\" Ecu\n"
                             "SG_ D : 0|8@1+ (1,0) [0|1] \"\" Ecu"));
    EXPECT_EQ(model.messages.at(0).signals.size(), 1U);
    EXPECT_TRUE(log.has(warning, "No colon found in signal line, skip: SG_ A 0|8@1+"));
    EXPECT_TRUE(log.has(warning, "No signal name found, skip: SG_ : 0|8@1+ (1,0) [0|1] \"\" Ecu"));
    EXPECT_TRUE(log.has(warning, "Signal format not match, skip: SG_ C : 0|8@2+ (1,0) [0|1] \"\" Ecu"));
}

TEST_F(DbcSignals, AnEmptyRangeIsDerived)
{
    ASSERT_TRUE(parseSignals("SG_ A : 0|8@1+ (2,0) [0|0] \"\" Ecu\nSG_ B : 8|8@1- (1,5) [0.0|0.0] \"\" Ecu\n"
                             "SG_ C : 64|64@1+ (1,3) [] \"\" Ecu\nSG_ D : 128|64@1- (1,0) [x] \"\" Ecu"));
    const auto &read = model.messages.at(0).signals;
    ASSERT_EQ(read.size(), 4U);
    EXPECT_EQ(read[0].minimum, 0.0);
    EXPECT_EQ(read[0].maximum, 510.0);
    EXPECT_EQ(read[1].minimum, -123.0);
    EXPECT_EQ(read[1].maximum, 132.0);
    EXPECT_EQ(read[2].minimum, 3.0); // the shift wraps
    EXPECT_EQ(read[2].maximum, 3.0);
    EXPECT_EQ(read[3].minimum, -9223372036854775808.0);
    EXPECT_EQ(read[3].maximum, 9223372036854775807.0);
}

TEST_F(DbcSignals, AnExponentInTheRangeMakesAPlainSignalAFloat)
{
    ASSERT_TRUE(parseSignals("SG_ A : 0|32@1+ (1,0) [-3.4E+038|3.4E+038] \"\" Ecu\n"
                             "SG_ B : 64|32@1+ (2,0) [-3.4E+038|3.4E+038] \"\" Ecu\n"
                             "SG_ C : 128|64@1+ (1,0) [0|1e5] \"\" Ecu\nSG_ D : 192|16@1+ (1,0) [0|1e5] \"\" Ecu\n"
                             "SG_ E : 256|32@1+ (1,0) [0|1] \"\" Ecu"));
    const auto &read = model.messages.at(0).signals;
    ASSERT_EQ(read.size(), 5U);
    EXPECT_EQ(read[0].valueType, 1);
    EXPECT_EQ(read[1].valueType, 0);
    EXPECT_EQ(read[2].valueType, 2);
    EXPECT_EQ(read[3].valueType, 0);
    EXPECT_EQ(read[4].valueType, 0);
}

TEST_F(DbcSignals, AMalformedScalingIsOneAndZero)
{
    ASSERT_TRUE(parseSignals("SG_ A : 0|8@1+ (5) [0|1] \"\" Ecu\nSG_ B : 8|8@1+ (1,2,3) [0|1] \"\" Ecu\n"
                             "SG_ C : 16|8@1+ (x,nan) [0|1] \"\" Ecu\nSG_ D : 24|8@1+ (inf,1e999) [0|1] \"\" Ecu"));
    const auto &read = model.messages.at(0).signals;
    ASSERT_EQ(read.size(), 4U);
    EXPECT_EQ(read[0].factor, 1.0);
    EXPECT_EQ(read[0].offset, 0.0);
    EXPECT_EQ(read[1].factor, 1.0);
    EXPECT_EQ(read[2].factor, 0.0);
    EXPECT_EQ(read[3].factor, 0.0);
    EXPECT_EQ(read[3].offset, 0.0);
    EXPECT_TRUE(log.has(warning, "Both factor and offset are zero for signal C:(0,0)"));
    EXPECT_TRUE(log.has(warning, "Both factor and offset are zero for signal D:(0,0)"));
}

TEST_F(DbcSignals, InvalidOnesAreRejected)
{
    ASSERT_TRUE(parseSignals("SG_ A : 0|0@1+ (1,0) [0|1] \"\" Ecu\nSG_ B : 0|65@1+ (1,0) [0|1] \"\" Ecu\n"
                             "SG_ C : 512|8@1+ (1,0) [0|1] \"\" Ecu\nSG_ D : 0|8@1+ (1,0) [2|1] \"\" New\n"
                             "SG_ E : 0|99999@1+ (1,0) [0|1] \"\" Ecu"));
    EXPECT_TRUE(model.messages.at(0).signals.empty());
    EXPECT_TRUE(log.has(error, "Invalid signal size 0 for signal A"));
    EXPECT_TRUE(log.has(error, "Invalid signal size 65 for signal B"));
    EXPECT_TRUE(log.has(error, "Invalid start bit 512 for signal C"));
    EXPECT_TRUE(log.has(error, "Invalid value range [2, 1] for signal D"));
    EXPECT_TRUE(log.has(error, "Invalid signal size 0 for signal E"));
    EXPECT_EQ(model.nodes.size(), 1U); // no receiver of a rejected signal
}

TEST_F(DbcSignals, AnExtendedVersionOf128BitsIsAccepted)
{
    ASSERT_TRUE(parseSignals("SG_ ExtendedVersionInfo : 0|128@1+ (1,0) [0|1] \"\" Ecu"));
    EXPECT_EQ(signal().size, 128);
    EXPECT_EQ(countWarningsAndErrors(), 0U);
}

TEST_F(DbcSignals, ARepeatedNameIsThereTwiceAndTheLaterIsFound)
{
    ASSERT_TRUE(parseSignals("SG_ A : 0|8@1+ (1,0) [0|1] \"\" Ecu\nSG_ A : 8|8@1+ (1,0) [0|1] \"\" Ecu"));
    ASSERT_EQ(model.messages.at(0).signals.size(), 2U);
    EXPECT_EQ(model.findSignal(100, u"A")->startBit, 8);
    EXPECT_TRUE(log.has(warning, "Duplicate signal name A in message 100"));
}

TEST_F(DbcSignals, UnitsAreKeptAsWritten)
{
    ASSERT_TRUE(parseSignals("SG_ A : 0|8@1+ (1,0) [0|1] \"\xc2\xb0 C\" Ecu\nSG_ B : 8|8@1+ (1,0) [0|1] V Ecu\n"
                             "SG_ C : 16|8@1+ (1,0) [0|1] \"open Ecu"));
    const auto &read = model.messages.at(0).signals;
    EXPECT_EQ(read[0].unit, QStringLiteral("\u00b0 C"));
    EXPECT_EQ(read[1].unit, QStringLiteral("V"));
    EXPECT_EQ(read[2].unit, QStringLiteral("\"open"));
}

TEST_F(DbcSignals, ReceiversAreCheckedAsNodes)
{
    ASSERT_TRUE(parseSignals("SG_ A : 0|8@1+ (1,0) [0|1] \"\" 1x , Vector__XXX,,New  Ecu"));
    EXPECT_TRUE(log.has(error, "Invalid node name format: 1x"));
    EXPECT_NE(model.findNode(u"New"), nullptr);
    EXPECT_EQ(model.findNode(u"Vector__XXX"), nullptr);
    EXPECT_EQ(signal().receivers.size(), 4);
}

TEST_F(DbcSignals, AnOverlapIsLoggedWithBothSignals)
{
    ASSERT_TRUE(parseSignals("SG_ A M : 7|4@0+ (1,0) [0|1] \"\" Ecu\nSG_ B : 0|2@1- (1,0) [0|1] \"\" Ecu\n"
                             "SG_ C m5 : 1|4@1+ (1,0) [0|1] \"\" Ecu"));
    EXPECT_EQ(model.messages.at(0).signals.size(), 3U);
    EXPECT_EQ(log.countContaining(warning, "Overlap signal"), 1U); // the first overlap only
    EXPECT_TRUE(log.has(warning, "Overlap signal in message Msg (100):\n"
                                 "[C, start bit:1, size:4, multiplexor:false, multiplexed:true, muxVal:5] "
                                 "LittleEndian: 1, 2, 3, 4\n"
                                 "[A, start bit:7, size:4, multiplexor:true, multiplexed:false, muxVal:-1] "
                                 "BigEndian: 7, 6, 5, 4"));
}

TEST_F(DbcSignals, MultiplexedSignalsMayShareBitsButNotWithPlainOnes)
{
    ASSERT_TRUE(parseSignals("SG_ A m0 : 7|8@0+ (1,0) [0|1] \"\" Ecu\nSG_ B m0 : 7|8@0+ (1,0) [0|1] \"\" Ecu"));
    EXPECT_EQ(log.countContaining(warning, "Overlap signal"), 0U);
    ASSERT_TRUE(parseSignals("SG_ A m0 : 7|8@0+ (1,0) [0|1] \"\" Ecu\nSG_ B : 7|8@0+ (1,0) [0|1] \"\" Ecu"));
    EXPECT_EQ(log.countContaining(warning, "Overlap signal"), 1U);
}

TEST_F(DbcSignals, IndependentSignalsMayOverlap)
{
    ASSERT_TRUE(parseBehindMessage("BO_ 3221225472 VECTOR__INDEPENDENT_SIG_MSG: 0 Vector__XXX\n"
                                   " SG_ A : 0|8@1+ (1,0) [0|1] \"\" Ecu\n SG_ B : 0|8@1+ (1,0) [0|1] \"\" Ecu\n\n"));
    EXPECT_EQ(log.countContaining(warning, "Overlap signal"), 0U);
}

TEST_F(DbcSignals, OccupiedBitsAreThoseOfTheDecoder)
{
    for (const bool isBigEndian : {false, true}) {
        for (unsigned startBit = 0; startBit < 512; startBit += 3) {
            for (unsigned size = 1; size <= 64; size += 7) {
                std::unordered_set<unsigned short> bits;
                const auto start = static_cast<std::uint16_t>(startBit);
                const auto length = static_cast<std::uint16_t>(size);
                DbcOccupiedBits::forEach(start, length, isBigEndian, [&](std::uint16_t bit) { bits.insert(bit); });
                ASSERT_EQ(bits, Common::Utils::getSignalActualSetBits(start, length, isBigEndian));
            }
        }
    }
}

TEST_F(DbcSignals, AnOverlapOfVeryLongSignalsIsOneShortLine)
{
    ASSERT_TRUE(parseSignals("SG_ ExtendedVersionA : 0|65535@1+ (1,0) [0|1] \"\" Ecu\n"
                             "SG_ ExtendedVersionB : 511|65535@0+ (1,0) [0|1] \"\" Ecu"));
    EXPECT_EQ(log.countContaining(warning, "Overlap signal"), 1U);
    for (const auto &line : log.lines())
        EXPECT_LT(line.text.size(), 2000U);
    EXPECT_EQ(log.countContaining(warning, " LittleEndian: 0, 1, 2, "), 1U);
    EXPECT_EQ(log.countContaining(warning, ", 62, 63, ..."), 1U);
    EXPECT_EQ(log.countContaining(warning, " BigEndian: 511, 510, "), 1U);
    EXPECT_EQ(log.countContaining(warning, ", 561, 560, ...\n"), 1U);
}

TEST_F(DbcSignals, OverlapsOfSignalsOfAnyLengthAreThoseOfTheirBits)
{
    std::mt19937 random(31);
    const auto anySignal = [&random] {
        DbcSignal signal;
        signal.startBit = static_cast<std::uint16_t>(random() % 4 == 0 ? 504 + random() % 8 : random() % 512);
        signal.size = static_cast<std::uint16_t>(1 + random() % (random() % 2 == 0 ? 40 : 700));
        signal.isBigEndian = random() % 2 == 0;
        return signal;
    };
    const auto bitsOf = [](const DbcSignal &signal) {
        std::set<std::uint16_t> bits;
        DbcOccupiedBits::forEach(signal.startBit, signal.size, signal.isBigEndian,
                                 [&bits](std::uint16_t bit) { bits.insert(bit); });
        return bits;
    };
    for (int run = 0; run < 1000; ++run) {
        DbcMessage message;
        message.signals = {anySignal()};
        const DbcSignal later = anySignal();
        const auto older = bitsOf(message.signals.front());
        const auto newer = bitsOf(later);
        const bool shares = std::any_of(newer.begin(), newer.end(), [&](auto bit) { return older.count(bit) > 0; });
        log.clear();
        DbcOverlapCheck(message).add(later);
        ASSERT_EQ(log.countContaining(warning, "Overlap signal"), shares ? 1U : 0U) << run;
    }
}
