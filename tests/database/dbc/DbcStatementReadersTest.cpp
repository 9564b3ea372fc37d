// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/database/dbc/DbcFixture.h"

#include <limits>

namespace {

using DbcComments = DbcFixture;
using DbcDescriptions = DbcFixture;
using DbcValueTypes = DbcFixture;
using DbcMultiplexing = DbcFixture;

const QByteArray floatMessage = "BO_ 100 Msg: 16 Ecu\n SG_ F : 0|32@1- (2,3) [0|1] \"\" Ecu\n"
                                " SG_ D : 64|64@1- (2,3) [0|1] \"\" Ecu\n SG_ S : 32|8@1- (2,3) [0|1] \"\" Ecu\n\n";

} // namespace

TEST_F(DbcComments, AreTrimmedAndMayHoldQuotesAndLines)
{
    ASSERT_TRUE(parseBehindMessage("CM_ \"global\";\nCM_ BO_ 100 \" a \"b\"\nc \";\nCM_ SG_ 100 Sig \"s\" ;\n"
                                   "CM_ BU_ Ecu \"n\";\nCM_ BU_ Nobody \"n\";\n"));
    EXPECT_EQ(model.messages.at(0).comment, QStringLiteral("a \"b\"\nc"));
    EXPECT_EQ(signal().comment, QStringLiteral("s"));
    EXPECT_EQ(model.nodes.at(0).comment, QStringLiteral("n"));
    EXPECT_TRUE(model.comments.isEmpty());
    EXPECT_EQ(countWarningsAndErrors(), 0U);
}

TEST_F(DbcComments, WithoutAnObjectAreLogged)
{
    const QByteArray unknown = "CM_ BO_ x " + QByteArray(200, '-') + "\"t\";";
    ASSERT_TRUE(parseBehindMessage("CM_ BO_ 7 \"m\";\nCM_ SG_ 100 No \"s\";\n" + unknown));
    EXPECT_TRUE(log.has(warning, "Message not found for comment: 7"));
    EXPECT_TRUE(log.has(warning, "Signal No not found in message 100 for comment"));
    EXPECT_TRUE(log.has(warning, "Unknown comment block: " + unknown.left(80).toStdString()));
}

TEST_F(DbcComments, AnUnknownBlockIsLoggedWithItsLines)
{
    ASSERT_TRUE(parseBehindMessage("CM_ SG_ x Sig\n\"first\nsecond\" ;\nCM_ BO_ 100 \"y\";\n"));
    EXPECT_TRUE(log.has(warning, "Unknown comment block: CM_ SG_ x Sig\n\"first\nsecond\" ;"));
    EXPECT_EQ(model.messages.at(0).comment, QStringLiteral("y"));
}

TEST_F(DbcComments, OfAMessageWithinAnotherCommentWins)
{
    ASSERT_TRUE(parseBehindMessage("CM_ SG_ 100 Sig \"see CM_ BO_ 100 \"x\";\n"));
    EXPECT_EQ(model.messages.at(0).comment, QStringLiteral("x"));
    EXPECT_EQ(signal().comment, QString());
}

TEST_F(DbcComments, OfASignalWithinThatOfANodeWins)
{
    ASSERT_TRUE(parseBehindMessage("CM_ BU_ Ecu \"see CM_ SG_ 100 Sig \"x\";\n"));
    EXPECT_EQ(signal().comment, QStringLiteral("x"));
    EXPECT_EQ(model.nodes.at(0).comment, QString());
}

TEST_F(DbcDescriptions, OfASignalMaySpreadOverLines)
{
    ASSERT_TRUE(parseBehindMessage("VAL_ 100 Sig 0 \"a\"\n 1 \"b\"\n ;\n"));
    EXPECT_EQ(signal().valueDescriptions.size(), 2U);
    EXPECT_EQ(signal().valueDescriptions.at(1), QStringLiteral("b"));
}

TEST_F(DbcDescriptions, KeysLoseTheirSignAndHugeOnesAreSkipped)
{
    ASSERT_TRUE(parseBehindMessage("VAL_ 100 Sig -1 \"x\" 4294967295 \"max\" 4294967296 \"huge\" 1 \"y\";\n"));
    EXPECT_EQ(signal().valueDescriptions.size(), 2U);
    EXPECT_EQ(signal().valueDescriptions.at(1), QStringLiteral("y")); // the later one
    EXPECT_EQ(signal().valueDescriptions.at(4294967295U), QStringLiteral("max"));
}

TEST_F(DbcDescriptions, ThatCannotBeReadAreLogged)
{
    ASSERT_TRUE(parseBehindMessage("VAL_ ;\nVAL_ 100 No 0 \"a\";\nVAL_ 100 Sig x;\nVAL_ T x;\nVAL_ 100 Sig ;\n"));
    EXPECT_TRUE(log.has(error, "Failed to parse VAL_ block: VAL_ ;"));
    EXPECT_TRUE(log.has(warning, "Signal No not found in message 100"));
    EXPECT_TRUE(log.has(error, "Failed to parse value descriptions for signal Sig in message 100\n x"));
    EXPECT_TRUE(log.has(error, "Failed to parse value descriptions for table T\n x"));
    EXPECT_EQ(model.valueTables.size(), 1U);
}

TEST_F(DbcDescriptions, ATakenTableNameIsRefusedForOneStatementAndAcceptedForTheOther)
{
    ASSERT_TRUE(parseBehindMessage("VAL_TABLE_ T 0 \"a\" ;\nVAL_TABLE_ T 1 \"b\" ;\nVAL_ T 2 \"c\" ;\n"));
    ASSERT_EQ(model.valueTables.size(), 2U);
    EXPECT_EQ(model.valueTables.at(0).entries.at(0), QStringLiteral("a"));
    EXPECT_EQ(model.valueTables.at(1).entries.at(2), QStringLiteral("c"));
    EXPECT_TRUE(log.has(error, "Duplicate value table name: T"));
    EXPECT_TRUE(log.has(warning, "Value table T failed validation or already exists"));
}

TEST_F(DbcDescriptions, TablesThatCannotBeReadAreLogged)
{
    ASSERT_TRUE(parseBehindMessage("VAL_TABLE_ - 0 \"a\";\nVAL_TABLE_ T x;\n"));
    EXPECT_TRUE(model.valueTables.empty());
    EXPECT_TRUE(log.has(error, "Failed to parse VAL_TABLE_ block: VAL_TABLE_ - 0 \"a\";"));
    EXPECT_TRUE(log.has(error, "Failed to parse value descriptions for table T"));
}

TEST_F(DbcValueTypes, GiveFloatsTheirScalingAndRangeButNotTheirType)
{
    ASSERT_TRUE(parse(floatMessage + "SIG_VALTYPE_ 100 F : 1;\nSIG_VALTYPE_ 100 D :2 ;\n"));
    const DbcSignal *single = model.findSignal(100, u"F");
    EXPECT_EQ(single->valueType, 0);
    EXPECT_EQ(single->factor, 1.0);
    EXPECT_EQ(single->offset, 0.0);
    EXPECT_EQ(single->minimum, -3.4028234663852886e38);
    EXPECT_EQ(single->maximum, 3.4028234663852886e38);
    EXPECT_EQ(model.findSignal(100, u"D")->minimum, -1.7976931348623157e308);
    EXPECT_EQ(model.findSignal(100, u"D")->maximum, 1.7976931348623157e308);
    EXPECT_EQ(model.signalValueTypes.size(), 2U);
    EXPECT_TRUE(log.has(debug, "Updated signal F value type to 1 with appropriate attributes"));
}

TEST_F(DbcValueTypes, OfTheWrongSizeAreLogged)
{
    ASSERT_TRUE(parse(floatMessage + "SIG_VALTYPE_ 100 S : 1;\nSIG_VALTYPE_ 100 F : 2;\nSIG_VALTYPE_ 100 D : 0;\n"));
    EXPECT_TRUE(log.has(warning, "Float signal S has non-standard size 8 (expected 32)"));
    EXPECT_TRUE(log.has(warning, "Double signal F has non-standard size 32 (expected 64)"));
    EXPECT_EQ(model.findSignal(100, u"S")->factor, 1.0);
    EXPECT_EQ(model.findSignal(100, u"S")->maximum, 1.0);
    EXPECT_EQ(model.findSignal(100, u"D")->factor, 2.0);
}

TEST_F(DbcValueTypes, ThatAreWrongAreLoggedAndOnesWithoutASignalAreOnlyKept)
{
    ASSERT_TRUE(parse(floatMessage + "SIG_VALTYPE_ 100 F;\nSIG_VALTYPE_ 100 F : 3;\nSIG_VALTYPE_ 7 X : 1;\n"));
    EXPECT_TRUE(log.has(warning, "Invalid SIG_VALTYPE_ block: SIG_VALTYPE_ 100 F;"));
    EXPECT_TRUE(log.has(error, "Invalid signal value type 3 for signal F in message 100"));
    EXPECT_TRUE(log.has(error, "Invalid signal value type for signal F in message 100"));
    ASSERT_EQ(model.signalValueTypes.size(), 1U);
    EXPECT_EQ(model.signalValueTypes.at(0).messageId, 7U);
}

TEST_F(DbcValueTypes, ATypeBeyondItsFieldReadsZero)
{
    ASSERT_TRUE(parse(floatMessage + "SIG_VALTYPE_ 100 F : 99999;\n"));
    ASSERT_EQ(model.signalValueTypes.size(), 1U);
    EXPECT_EQ(model.signalValueTypes.at(0).type, 0);
    EXPECT_EQ(model.findSignal(100, u"F")->factor, 2.0);
    EXPECT_EQ(log.countContaining(error, "Invalid signal value type"), 0U);
}

TEST_F(DbcMultiplexing, TheFirstNumberOfTheFirstRangeCounts)
{
    ASSERT_TRUE(parseBehindMessage("SG_MUL_VAL_ 100 Sig Mux 5-7, 9-9;\nSG_MUL_VAL_ 100 No Mux 1-1;\n"));
    EXPECT_TRUE(signal().isMultiplexed);
    EXPECT_EQ(signal().multiplexValue, 5);
    ASSERT_EQ(model.signalMultiplexValues.size(), 2U);
    EXPECT_EQ(model.signalMultiplexValues.at(0).ranges, QStringLiteral("5-7, 9-9"));
    EXPECT_EQ(model.signalMultiplexValues.at(0).multiplexorName, QStringLiteral("Mux"));
    EXPECT_EQ(countWarningsAndErrors(), 2U); // the lines behind the last message, which have no colon
}

TEST_F(DbcMultiplexing, TheFirstSignalOfTheNameIsMeant)
{
    ASSERT_TRUE(parseSignals("SG_ A : 0|8@1+ (1,0) [0|1] \"\" Ecu\nSG_ A : 8|8@1+ (1,0) [0|1] \"\" Ecu\n"
                             "SG_MUL_VAL_ 100 A Mux 4-4;\n"));
    EXPECT_TRUE(model.messages.at(0).signals.at(0).isMultiplexed);
    EXPECT_FALSE(model.messages.at(0).signals.at(1).isMultiplexed);
}

TEST_F(DbcMultiplexing, StatementsThatAreWrongAreLogged)
{
    ASSERT_TRUE(parseBehindMessage("SG_MUL_VAL_ 100 Sig;\nSG_MUL_VAL_ 100 Sig Mux 5;\n"
                                   "SG_MUL_VAL_ 100 Sig Mux 1-2, 7-5;\nSG_MUL_VAL_ 9 Sig Mux 1-2;\n"));
    EXPECT_TRUE(log.has(error, "Failed to parse SG_MUL_VAL_ block: SG_MUL_VAL_ 100 Sig;"));
    EXPECT_TRUE(log.has(error, "Invalid multiplexor value range format: 5"));
    EXPECT_TRUE(log.has(error, "Invalid value range 7-5 for multiplexor"));
    EXPECT_EQ(log.count(error, "Invalid signal multiplex value for signal Sig in message 100"), 2U);
    EXPECT_TRUE(log.has(warning, "Message not found for signal multiplex value: 9"));
    EXPECT_FALSE(signal().isMultiplexed);
}

TEST_F(DbcMultiplexing, AMissingSignalIsKeptInTheRecordWithoutALine)
{
    ASSERT_TRUE(parseBehindMessage("CM_ BO_ 100 \"ends the message's text\";\nSG_MUL_VAL_ 100 No Mux 1-1;\n"));
    EXPECT_EQ(model.signalMultiplexValues.size(), 1U);
    EXPECT_EQ(countWarningsAndErrors(), 0U);
}

TEST_F(DbcMultiplexing, ASignalThatOnlyAnEarlierMessageOfTheNumberHasIsNotMeant)
{
    ASSERT_TRUE(parseBehindMessage("BO_ 100 Later: 8 Ecu\n SG_ Other : 0|8@1+ (1,0) [0|1] \"\" Ecu\n\n"
                                   "CM_ BO_ 100 \"x\";\nSG_MUL_VAL_ 100 Sig Mux 1-1;\n"));
    EXPECT_NE(model.findSignal(100, u"Sig"), nullptr);
    EXPECT_FALSE(signal().isMultiplexed);
    EXPECT_EQ(model.signalMultiplexValues.size(), 1U);
    EXPECT_EQ(countWarningsAndErrors(), 0U);
}

TEST_F(DbcMultiplexing, NumbersBeyondTheirTypesReadZero)
{
    ASSERT_TRUE(parseBehindMessage("SG_MUL_VAL_ 100 Sig Mux 5-99999999999;\n"));
    EXPECT_TRUE(log.has(error, "Invalid value range 5-0 for multiplexor"));
    EXPECT_FALSE(signal().isMultiplexed);
    ASSERT_TRUE(parseBehindMessage("SG_MUL_VAL_ 100 Sig Mux 99999999999-3;\n"));
    EXPECT_TRUE(signal().isMultiplexed);
    EXPECT_EQ(signal().multiplexValue, 0);
    ASSERT_TRUE(parseBehindMessage("SG_MUL_VAL_ 100 Sig Mux 4294967295-4294967295;\n")); // no value of a signal
    EXPECT_EQ(signal().multiplexValue, 0);
    ASSERT_TRUE(parseBehindMessage("SG_MUL_VAL_ 99999999999 Sig Mux 1-1;\n"));
    EXPECT_TRUE(log.has(warning, "Message not found for signal multiplex value: 0"));
}
