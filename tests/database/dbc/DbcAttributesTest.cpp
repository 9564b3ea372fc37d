// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/database/dbc/DbcFixture.h"

namespace {

class DbcAttributes : public DbcFixture
{
protected:
    const DbcMessage &msg() const { return model.messages.at(0); }
    static QByteArray frameFormats()
    {
        return "BA_DEF_ BO_ \"VFrameFormat\" ENUM \"StandardCAN\",\"ExtendedCAN\",\"Remote\",\"StandardCAN_FD\","
               "\"ExtendedCAN_FD\",\"J1939PG\";\nBA_DEF_ BO_ \"CANFD_BRS\" ENUM \"0\",\"1\";\n";
    }
};

} // namespace

TEST_F(DbcAttributes, DefinitionsAreRead)
{
    ASSERT_TRUE(
        parseBehindMessage("BA_DEF_ \"Name\" STRING ;\nBA_DEF_ BO_ \"Cycle\" INT 0 65535;\n"
                           "BA_DEF_ SG_  \"Kind\" ENUM  \"a\" , \"b c\",\"\";\nBA_DEF_ BU_ \"F\" FLOAT -1.5 1e3;\n"
                           "BA_DEF_ BU_ \"H\" HEX 0x0 0xFF;\nBA_DEF_ BU_ \"None\" INT;\nBA_DEF_ \"E\" ENUM;\n"));
    const auto &read = model.attributeDefinitions;
    ASSERT_EQ(read.size(), 7U);
    EXPECT_EQ(read[0].objectType, QString());
    EXPECT_EQ(read[0].valueType, QStringLiteral("STRING"));
    EXPECT_TRUE(read[0].minimum.isNull() && read[0].maximum.isNull() && read[0].defaultValue.isNull());
    EXPECT_EQ(read[1].objectType, QStringLiteral("BO_"));
    EXPECT_EQ(read[1].minimum, QVariant(QStringLiteral("0")));
    EXPECT_EQ(read[1].maximum, QVariant(QStringLiteral("65535")));
    EXPECT_EQ(read[2].enumValues, (QStringList{QStringLiteral("a"), QStringLiteral("b c"), QString()}));
    EXPECT_EQ(read[4].maximum, QVariant(QStringLiteral("0xFF")));
    EXPECT_TRUE(read[5].minimum.isNull());
    EXPECT_TRUE(read[6].enumValues.isEmpty());
}

TEST_F(DbcAttributes, DefinitionsThatCannotBeReadAreLeftOut)
{
    ASSERT_TRUE(parseBehindMessage("BA_DEF_ \"A\" INT 5;\nBA_DEF_ \"B\" HEX 1 2 3;\nBA_DEF_ \"C\" BLOB 1 2;\n"));
    EXPECT_TRUE(model.attributeDefinitions.empty());
    EXPECT_TRUE(log.has(error, "Invalid value range format for attribute A: 5"));
    EXPECT_TRUE(log.has(error, "Invalid value range format for attribute B: 1 2 3"));
    EXPECT_TRUE(log.has(error, "Unknown attribute value type: BLOB"));
    EXPECT_TRUE(log.has(warning, "Failed to parse value range for attribute: A"));
    EXPECT_TRUE(log.has(warning, "Failed to parse value range for attribute: C"));
}

TEST_F(DbcAttributes, ADefaultGoesToTheFirstDefinitionOfItsName)
{
    ASSERT_TRUE(parseBehindMessage("BA_DEF_ BU_ \"A\" INT 0 1;\nBA_DEF_ BO_ \"A\" INT 0 1;\nBA_DEF_ \"S\" STRING ;\n"
                                   "BA_DEF_DEF_ \"A\" 1;\nBA_DEF_DEF_ \"S\" \"x y\" ;\nBA_DEF_DEF_ \"Z\" 2;\n"));
    EXPECT_EQ(model.attributeDefinitions.at(0).defaultValue, QVariant(QStringLiteral("1")));
    EXPECT_TRUE(model.attributeDefinitions.at(1).defaultValue.isNull());
    EXPECT_EQ(model.attributeDefinitions.at(2).defaultValue, QVariant(QStringLiteral("x y")));
    EXPECT_TRUE(log.has(warning, "Attribute not found for default value: Z"));
}

TEST_F(DbcAttributes, ValuesGoToTheirObjects)
{
    ASSERT_TRUE(parseBehindMessage("BA_ \"G\" \"a b\";\nBA_ \"N\" BU_ Ecu 1;\nBA_ \"N\" BU_ Nobody 1;\n"
                                   "BA_ \"M\" BO_ 100 5;\nBA_ \"S\" SG_ 100 Sig \"x\";\n"));
    ASSERT_EQ(model.attributes.size(), 1U);
    EXPECT_EQ(model.attributes.at(0).value, QStringLiteral("a b"));
    ASSERT_EQ(model.nodes.at(0).attributes.size(), 1U);
    ASSERT_EQ(msg().attributes.size(), 1U);
    EXPECT_EQ(msg().attributes.at(0).name, QStringLiteral("M"));
    EXPECT_EQ(msg().attributes.at(0).value, QStringLiteral("5"));
    ASSERT_EQ(signal().attributes.size(), 1U);
    EXPECT_EQ(signal().attributes.at(0).value, QStringLiteral("x"));
    EXPECT_EQ(countWarningsAndErrors(), 0U);
}

TEST_F(DbcAttributes, ValuesWithoutAnObjectAreLogged)
{
    ASSERT_TRUE(
        parseBehindMessage("BA_ \"A\" BO_ 5;\nBA_ \"B\" BO_ 7 5;\nBA_ \"C\" SG_ 100 5;\nBA_ \"D\" SG_ 100 No 5;\n"));
    EXPECT_TRUE(log.has(warning, "Missing message ID for message attribute: A"));
    EXPECT_TRUE(log.has(warning, "Message not found for attribute value: 7"));
    EXPECT_TRUE(log.has(warning, "Missing message ID or signal name for signal attribute: C"));
    EXPECT_TRUE(log.has(warning, "Signal No not found in message 100"));
}

TEST_F(DbcAttributes, TheFrameFormatSetsTheFlags)
{
    ASSERT_TRUE(parse("BO_ 2147483649 A: 8 Ecu\n\nBO_ 2 B: 8 Ecu\n\nBO_ 3 C: 8 Ecu\n\nBO_ 2147483652 D: 8 Ecu\n\n" +
                      frameFormats() +
                      "BA_ \"VFrameFormat\" BO_ 2147483649 0;\nBA_ \"VFrameFormat\" BO_ 2 4;\n"
                      "BA_ \"VFrameFormat\" BO_ 3 2;\nBA_ \"VFrameFormat\" BO_ 2147483652 5;\n"));
    const auto &read = model.messages;
    EXPECT_FALSE(read[0].isExtended);
    EXPECT_TRUE(read[1].isExtended && read[1].isFd && !read[1].isBrs);
    EXPECT_TRUE(read[2].isRemote);
    EXPECT_FALSE(read[3].isExtended); // neither does its text begin with "Extended"
}

TEST_F(DbcAttributes, TheBitRateSwitchComesFromTheMessageOrTheDefault)
{
    const QByteArray format = "BA_ \"VFrameFormat\" BO_ 100 3;\n";
    const QByteArray on = "BA_ \"CANFD_BRS\" BO_ 100 1;\n";
    const QByteArray byDefault = "BA_DEF_DEF_ \"CANFD_BRS\" \"1\";\n";
    ASSERT_TRUE(parseBehindMessage(frameFormats() + on + format));
    EXPECT_TRUE(msg().isBrs);
    ASSERT_TRUE(parseBehindMessage(frameFormats() + format + on)); // too late
    EXPECT_FALSE(msg().isBrs);
    ASSERT_TRUE(parseBehindMessage(frameFormats() + byDefault + "BA_ \"CANFD_BRS\" BO_ 100 0;\n" + format));
    EXPECT_TRUE(msg().isBrs);
    ASSERT_TRUE(parseBehindMessage(frameFormats() + on + "BA_ \"VFrameFormat\" BO_ 100 0;\n"));
    EXPECT_FALSE(msg().isBrs);
}

TEST_F(DbcAttributes, TheFirstBitRateSwitchOfAMessageCounts)
{
    const QByteArray format = "BA_ \"VFrameFormat\" BO_ 100 3;\n";
    const QByteArray on = "BA_ \"CANFD_BRS\" BO_ 100 1;\n";
    const QByteArray off = "BA_ \"CANFD_BRS\" BO_ 100 0;\n";
    ASSERT_TRUE(parseBehindMessage(frameFormats() + on + off + format));
    EXPECT_TRUE(msg().isBrs);
    ASSERT_TRUE(parseBehindMessage(frameFormats() + off + on + format));
    EXPECT_FALSE(msg().isBrs);
    EXPECT_EQ(msg().attributes.size(), 3U);
}

TEST_F(DbcAttributes, ABitRateSwitchDefinedElsewhereFirstTakesTheDefaultAway)
{
    ASSERT_TRUE(parseBehindMessage("BA_DEF_ \"CANFD_BRS\" ENUM \"0\",\"1\";\n" + frameFormats() +
                                   "BA_DEF_DEF_ \"CANFD_BRS\" \"1\";\nBA_ \"VFrameFormat\" BO_ 100 3;\n"));
    EXPECT_EQ(model.attributeDefinitions.at(0).defaultValue, QVariant(QStringLiteral("1")));
    EXPECT_TRUE(msg().isFd);
    EXPECT_FALSE(msg().isBrs);
}

TEST_F(DbcAttributes, AFrameFormatThatIsNoNumberIsLoggedAndChangesNothing)
{
    for (const char *value : {"ExtendedCAN", "1.0", "0x1", "99999999999"}) {
        ASSERT_TRUE(parse("BO_ 2147483749 Msg: 12 Ecu\n\n" + frameFormats() + "BA_ \"VFrameFormat\" BO_ 2147483749 \"" +
                          value + "\";\n"));
        EXPECT_TRUE(log.has(warning, std::string("Invalid VFrameFormat value ") + value + " in message Msg"));
        EXPECT_TRUE(msg().isExtended && msg().isFd) << value;
    }
}

TEST_F(DbcAttributes, AnImpossibleFrameFormatIsLogged)
{
    ASSERT_TRUE(parseBehindMessage(frameFormats() + "BA_ \"VFrameFormat\" BO_ 100 6;\n"));
    EXPECT_TRUE(log.has(warning, "Invalid VFrameFormat value 6 in message Msg"));
    ASSERT_TRUE(parseBehindMessage(frameFormats() + "BA_ \"VFrameFormat\" BO_ 100 -1;\n"));
    EXPECT_TRUE(log.has(warning, "Invalid VFrameFormat value -1 in message Msg"));
    for (const char *definition :
         {"", "BA_DEF_ BO_ \"VFrameFormat\" INT 0 9;\n", "BA_DEF_ \"VFrameFormat\" ENUM \"a\";\n"}) {
        ASSERT_TRUE(parseBehindMessage(definition + QByteArray("BA_ \"VFrameFormat\" BO_ 100 0;\n")));
        EXPECT_TRUE(log.has(warning, "VFrameFormat attribute not found or not an ENUM type in message Msg"));
    }
}

TEST_F(DbcAttributes, AStartValueBeyondTheSignalIsLoggedAndNotStored)
{
    ASSERT_TRUE(parseBehindMessage("BA_ \"GenSigStartValue\" SG_ 100 Sig 300;\n"));
    EXPECT_TRUE(log.has(warning, "Signal Sig start value 300 exceeds valid range for bit width 8 (allowed: 0 ~ 255)"));
    EXPECT_EQ(signal().value, 0U);
}

TEST_F(DbcAttributes, AStartValueIsTruncatedAndRaw)
{
    ASSERT_TRUE(parse("BO_ 100 Msg: 8 Ecu\n SG_ Sig : 0|8@1+ (2,7) [0|1] \"\" Ecu\n"
                      "BA_ \"GenSigStartValue\" SG_ 100 Sig 200.9;\n"));
    EXPECT_EQ(signal().value, 200U);
}

TEST_F(DbcAttributes, ANegativeStartValueIsMaskedToTheSignalsBits)
{
    ASSERT_TRUE(parse("BO_ 100 Msg: 8 Ecu\n SG_ Sig : 0|8@1- (1,0) [-1|1] \"\" Ecu\n"
                      "BA_ \"GenSigStartValue\" SG_ 100 Sig -2;\n"));
    EXPECT_EQ(signal().value, 0xFEU);
}

TEST_F(DbcAttributes, StartValuesOf64Bits)
{
    const QByteArray unsignedSignal = "BO_ 100 Msg: 8 Ecu\n SG_ Sig : 0|64@1+ (1,0) [0|1] \"\" Ecu\n";
    const QByteArray signedSignal = "BO_ 100 Msg: 8 Ecu\n SG_ Sig : 0|64@1- (1,0) [0|1] \"\" Ecu\n";
    ASSERT_TRUE(parse(unsignedSignal + "BA_ \"GenSigStartValue\" SG_ 100 Sig 1;\n"));
    EXPECT_TRUE(log.has(warning, "Signal Sig start value 1 exceeds valid range for bit width 64 (allowed: 0 ~ 0)"));
    ASSERT_TRUE(parse(signedSignal + "BA_ \"GenSigStartValue\" SG_ 100 Sig -1;\n"));
    EXPECT_EQ(signal().value, ~std::uint64_t{0});
    ASSERT_TRUE(parse(signedSignal + "BA_ \"GenSigStartValue\" SG_ 100 Sig 1e30;\n"));
    EXPECT_TRUE(log.has(warning, "Signal Sig start value 1e30 exceeds valid range for bit width 64 (allowed: "
                                 "-9223372036854775808 ~ 9223372036854775807)"));
}

TEST_F(DbcAttributes, AStartValueThatIsNoNumberIsLogged)
{
    for (const char *text : {"abc", "nan", "inf", "1e999"}) {
        ASSERT_TRUE(parseBehindMessage(QByteArray("BA_ \"GenSigStartValue\" SG_ 100 Sig ") + text + ";\n"));
        EXPECT_TRUE(log.has(warning, std::string("Signal Sig start value is not a valid number: ") + text));
    }
}
