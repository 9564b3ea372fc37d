// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcFile.h"
#include "database/dbc/DbcJ1939.h"
#include "database/dbc/DbcMessageCheck.h"
#include "tests/database/dbc/DbcFixture.h"

namespace {

using DbcMessages = DbcFixture;

DbcMessage namedMessage(const char *name, std::uint32_t id = 1, std::uint8_t size = 8)
{
    DbcMessage message;
    message.name = QString::fromLatin1(name);
    message.id = id;
    message.size = size;
    return message;
}

} // namespace

TEST_F(DbcMessages, AreReadWithTheirHead)
{
    ASSERT_TRUE(parseBehindMessage(""));
    const DbcMessage &read = model.messages.at(0);
    EXPECT_EQ(read.id, 100U);
    EXPECT_EQ(read.name, QStringLiteral("Msg"));
    EXPECT_EQ(read.size, 8);
    EXPECT_EQ(read.transmitter, QStringLiteral("Ecu"));
    EXPECT_FALSE(read.isExtended || read.isFd || read.isBrs || read.isRemote || read.isJ1939);
    EXPECT_EQ(countWarningsAndErrors(), 0U);
}

TEST_F(DbcMessages, AnExtendedMessageIsStoredWithoutBit31AndReachedByTheMaskedLookUp)
{
    ASSERT_TRUE(parse("BO_ 2147484672 Ext: 8 Ecu\n SG_ S : 0|8@1+ (1,0) [0|1] \"\" Ecu\n"
                      "CM_ BO_ 2147484672 \"hello\";\nCM_ SG_ 2147484672 S \"there\";\n"));
    EXPECT_EQ(model.messages.at(0).id, 1024U);
    EXPECT_TRUE(model.messages.at(0).isExtended);
    EXPECT_EQ(model.messages.at(0).comment, QStringLiteral("hello"));
    EXPECT_EQ(signal().comment, QStringLiteral("there"));
}

TEST_F(DbcMessages, EveryStatementReachesAnExtendedMessageByItsWrittenNumber)
{
    ASSERT_TRUE(parse("BO_ 2147484672 Ext: 8 Ecu\n SG_ S : 0|32@1- (2,3) [0|1] \"\" Ecu\nCM_ BO_ 2147484672 \"x\";\n"
                      "BA_ \"M\" BO_ 2147484672 5;\nBA_ \"GenSigStartValue\" SG_ 2147484672 S 7;\n"
                      "VAL_ 2147484672 S 1 \"one\" ;\nSIG_VALTYPE_ 2147484672 S : 1;\n"
                      "SG_MUL_VAL_ 2147484672 S Mux 4-5;\n"));
    const DbcMessage &extended = model.messages.at(0);
    ASSERT_EQ(extended.attributes.size(), 1U);
    EXPECT_EQ(extended.attributes.at(0).name, QStringLiteral("M"));
    EXPECT_EQ(signal().attributes.size(), 1U);
    EXPECT_EQ(signal().value, 7U);
    EXPECT_EQ(signal().valueDescriptions.at(1), QStringLiteral("one"));
    EXPECT_EQ(signal().factor, 1.0);
    EXPECT_EQ(signal().multiplexValue, 4);
    EXPECT_EQ(model.signalValueTypes.at(0).messageId, 2147484672U);
    EXPECT_EQ(model.signalMultiplexValues.at(0).messageId, 2147484672U);
    EXPECT_EQ(countWarningsAndErrors(), 0U);
}

TEST_F(DbcMessages, ASizeOf300IsStoredAs44AndPassesWhile100IsRejected)
{
    ASSERT_TRUE(parse("BO_ 1 A: 300 Ecu\n\nBO_ 2 B: 100 Ecu\n\n"));
    ASSERT_EQ(model.messages.size(), 1U);
    EXPECT_EQ(model.messages.at(0).size, 44);
    EXPECT_TRUE(model.messages.at(0).isFd);
    EXPECT_TRUE(log.has(error, "Invalid message size 100 for message B (2)"));
}

TEST_F(DbcMessages, NumbersBeyondTheirTypesReadZero)
{
    ASSERT_TRUE(parse("BO_ 99999999999999999999 A: 99999999999999999999 Ecu\n\n"));
    EXPECT_EQ(model.messages.at(0).id, 0U);
    EXPECT_EQ(model.messages.at(0).size, 0);
}

TEST_F(DbcMessages, BlanksBeforeTheColonLoseTheMessage)
{
    EXPECT_FALSE(parse("BO_ 1 A : 8 Ecu\n\n"));
    EXPECT_TRUE(log.has(error, "Message not found in dbc file: file.dbc"));
}

TEST_F(DbcMessages, AMessageWithNothingBehindItIsDropped)
{
    EXPECT_FALSE(parse("BO_ 7 A: 8 Ecu"));
    EXPECT_TRUE(log.has(warning, "Empty message content for message A (7)"));
}

TEST_F(DbcMessages, AFileOfSpecialMessagesAloneFails)
{
    EXPECT_FALSE(parse("BO_ 3221225472 VECTOR__INDEPENDENT_SIG_MSG: 0 Vector__XXX\n SG_ S : 0|8@1+ (1,0) [0|1] \"\" "
                       "Ecu\n\nBO_ 5 CAPL_MSG: 0 Ecu\n\n"));
    EXPECT_TRUE(log.has(error, "Message not found in dbc file: file.dbc"));
    EXPECT_TRUE(log.has(error, "Failed to parse DBC file"));
    ASSERT_EQ(model.specialMessages.size(), 2U);
    EXPECT_EQ(model.specialMessages.at(0).id, 3221225472U); // as written
    EXPECT_FALSE(model.specialMessages.at(0).isExtended);
    EXPECT_EQ(model.specialMessages.at(0).signals.size(), 1U);
}

TEST_F(DbcMessages, AnUnknownTransmitterIsAWarning)
{
    ASSERT_TRUE(parse("BO_ 1 A: 8 Other\n\nBO_ 2 DMx: 8 Other\n\nBO_ 3 C: 8 Vector__XXX\n\n"));
    EXPECT_EQ(model.messages.size(), 3U);
    EXPECT_TRUE(log.has(warning, "Transmitter node Other not found for message A (1)"));
    EXPECT_TRUE(log.has(warning, "Transmitter node Other not found for diagnostic message DMx (2)"));
    EXPECT_EQ(log.countContaining(warning, "Transmitter node"), 2U);
}

TEST_F(DbcMessages, DiagnosticNamesHaveRulesOfTheirOwn)
{
    ASSERT_TRUE(parse("BO_ 1 DM1: 100 Ecu\n\nBO_ 2 DM3_x: 100 Other\n\n"));
    ASSERT_EQ(model.messages.size(), 1U);
    EXPECT_EQ(model.messages.at(0).name, QStringLiteral("DM3_x"));
    EXPECT_TRUE(log.has(error, "Invalid diagnostic message size 100 for message DM1 (1)"));
}

TEST_F(DbcMessages, ALastMessagesTextRunsToTheFirstBoOfTheComments)
{
    ASSERT_TRUE(parse("BO_ 1 A: 8 Ecu\n SG_ S : 0|8@1+ (1,0) [0|1] \"\" Ecu\nCM_ SG_ 1 S \"x\";\nCM_ BO_ 1 \"y\";\n"
                      "SG_ T : 8|8@1+ (1,0) [0|1] \"\" Ecu\n"));
    EXPECT_EQ(model.messages.at(0).signals.size(), 1U);
}

TEST_F(DbcMessages, InALastMessageValueTypesAreIgnoredAndMultiplexValuesLackAColon)
{
    ASSERT_TRUE(parse("BO_ 1 A: 8 Ecu\n SG_ S : 0|32@1+ (1,0) [0|1] \"\" Ecu\nSIG_VALTYPE_ 1 S : 1;\n"
                      "SG_MUL_VAL_ 1 S M 0-1;\n"));
    EXPECT_EQ(model.messages.at(0).signals.size(), 1U);
    EXPECT_TRUE(log.has(warning, "No colon found in signal line, skip: SG_MUL_VAL_ 1 S M 0-1;"));
    EXPECT_EQ(model.signalMultiplexValues.size(), 1U);
}

TEST_F(DbcMessages, AMessageWithoutSignalsIsKeptWithAWarning)
{
    ASSERT_TRUE(parse("BO_ 1 A: 8 Ecu\n\nBO_ 2 B: 8 Ecu\n"));
    EXPECT_EQ(model.messages.size(), 2U);
    EXPECT_TRUE(log.has(warning, "Parse signals exception for message(A, 1): \n\n"));
}

TEST_F(DbcMessages, AnExtendedOneWithoutSignalsIsLoggedByItsWrittenNumber)
{
    ASSERT_TRUE(parse("BO_ 2147484672 Ext: 8 Ecu\n\n"));
    EXPECT_TRUE(log.has(warning, "Parse signals exception for message(Ext, 2147484672): \n\n"));
}

TEST_F(DbcMessages, ATextWithoutSignalsIsToldWhole)
{
    const std::string text = " " + std::string(3000, 'x') + '\n';
    ASSERT_TRUE(parse("BO_ 1 A: 8 Ecu\n" + QByteArray::fromStdString(text) + "\n"));
    EXPECT_EQ(log.countContaining(warning, text), 1U);
}

TEST_F(DbcMessages, ASignalNameRepeatedInALaterMessageOfTheSameNumberIsLogged)
{
    ASSERT_TRUE(parse("BO_ 1 A: 8 Ecu\n SG_ S : 0|8@1+ (1,0) [0|1] \"\" Ecu\n\n"
                      "BO_ 1 B: 8 Ecu\n SG_ S : 8|8@1+ (1,0) [0|1] \"\" Ecu\n\n"));
    EXPECT_EQ(log.count(warning, "Duplicate signal name S in message 1"), 1U);
    EXPECT_EQ(model.findSignal(1, u"S"), &model.messages.at(1).signals.at(0));
}

TEST_F(DbcMessages, ALaterMessageOfTheSameNumberWinsTheLookUp)
{
    ASSERT_TRUE(parse("BO_ 1 A: 8 Ecu\n SG_ S : 0|8@1+ (1,0) [0|1] \"\" Ecu\n\nBO_ 1 B: 8 Ecu\n\n"));
    EXPECT_EQ(model.messages.size(), 2U);
    EXPECT_EQ(model.findMessage(1)->name, QStringLiteral("B"));
    EXPECT_NE(model.findSignal(1, u"S"), nullptr);
    EXPECT_EQ(model.findMessage(2), nullptr);
    EXPECT_EQ(model.findSignal(1, u"T"), nullptr);
}

TEST_F(DbcMessages, NoMessageOfAFileIsClassifiedAsJ1939)
{
    ASSERT_TRUE(parse("BO_ 2566844926 J: 8 Other\n\n"));
    EXPECT_FALSE(model.messages.at(0).isJ1939);
    EXPECT_TRUE(log.has(debug, "  * J1939 Messages: 0"));
}

TEST_F(DbcMessages, ACopyFindsItsOwn)
{
    ASSERT_TRUE(parseBehindMessage(""));
    const DbcFile copy = model;
    EXPECT_EQ(copy.findMessage(100), &copy.messages.at(0));
    EXPECT_EQ(copy.findSignal(100, u"Sig"), &copy.messages.at(0).signals.at(0));
    EXPECT_EQ(copy.findNode(u"Ecu"), &copy.nodes.at(0));
}

TEST_F(DbcMessages, ChecksThatNoFileReachesHoldForMessagesMadeElsewhere)
{
    DbcFile file;
    log.clear();
    EXPECT_TRUE(DbcMessageCheck::isValid(namedMessage("CAPL_IDS", 9), file));
    EXPECT_TRUE(log.has(info, "Found special message CAPL_IDS with ID 9"));
    EXPECT_FALSE(DbcMessageCheck::isValid(namedMessage("A", 0x20000000), file));
    EXPECT_TRUE(log.has(info, "Message ID 536870912 exceeds maximum value 536870911"));
    EXPECT_FALSE(DbcMessageCheck::isValid(namedMessage("", 4), file));
    EXPECT_TRUE(log.has(error, "Message name cannot be empty for ID 4"));
    DbcMessage diagnostic = namedMessage("", 254 << 16);
    diagnostic.isJ1939 = true;
    EXPECT_FALSE(DbcMessageCheck::isValid(diagnostic, file));
    EXPECT_TRUE(log.has(error, "Diagnostic message name cannot be empty for ID 16646144"));
    DbcMessage odd = namedMessage("Odd", 5);
    odd.isBrs = odd.isRemote = true;
    EXPECT_TRUE(DbcMessageCheck::isValid(odd, file));
    EXPECT_TRUE(log.has(warning, "Message Odd (5) has BRS enabled but is not a CAN FD message."));
    EXPECT_TRUE(log.has(warning, "Remote frame message Odd (5) should have a size of 0, but has 8."));
}

TEST_F(DbcMessages, J1939IdentifiersAreTakenApart)
{
    const DbcJ1939Info addressed = DbcJ1939::infoOf(0x18EF2301);
    EXPECT_EQ(addressed.priority, 6);
    EXPECT_EQ(addressed.pgn, 0xEF23U);
    EXPECT_EQ(addressed.sourceAddress, 1);
    EXPECT_EQ(addressed.destinationAddress, 0x23);
    EXPECT_EQ(addressed.pduType, 1);
    EXPECT_TRUE(addressed.isPf239);
    EXPECT_EQ(DbcJ1939::infoOf(0x0CF00400).pduType, 2);
    EXPECT_EQ(DbcJ1939::infoOf(0x18FECA02).pduType, 4);
    EXPECT_EQ(DbcJ1939::infoOf(0x18FECA02).destinationAddress, 0);
    EXPECT_FALSE(DbcJ1939::infoOf(0x18EE2301).isPf239);
}

TEST_F(DbcMessages, J1939ChecksLogWhatIsWrong)
{
    DbcFile file;
    DbcMessage message = namedMessage("J", 0x18FECA02);
    DbcJ1939Info wrong;
    wrong.pgn = 0x40000;
    log.clear();
    EXPECT_FALSE(DbcJ1939::isValid(wrong, message, file));
    EXPECT_TRUE(log.has(error, "Invalid PGN 0x40000 for J1939 message J"));
    wrong.pgn = 0;
    wrong.priority = 8;
    EXPECT_FALSE(DbcJ1939::isValid(wrong, message, file));
    EXPECT_TRUE(log.has(error, "Invalid priority 8 for J1939 message J"));

    EXPECT_TRUE(DbcJ1939::classify(message, file));
    EXPECT_TRUE(message.isJ1939);
    EXPECT_TRUE(log.has(debug, "Parsed j1939 message: J (419351042) with 0 signals"));
    message.transmitter = QStringLiteral("Ecu");
    EXPECT_TRUE(DbcJ1939::classify(message, file));
    EXPECT_TRUE(log.has(warning, "Transmitter Ecu not found in J1939 nodes for message J"));
    DbcNode node;
    node.name = message.transmitter;
    node.isJ1939 = true;
    file.addNode(node);
    EXPECT_TRUE(DbcJ1939::classify(message, file));
    EXPECT_TRUE(log.has(warning, "Source address 0x2 not claimed by node Ecu"));
    file.nodes.at(0).claimedAddresses = {2};
    log.clear();
    EXPECT_TRUE(DbcJ1939::classify(message, file));
    EXPECT_EQ(countWarningsAndErrors(), 0U);
}
