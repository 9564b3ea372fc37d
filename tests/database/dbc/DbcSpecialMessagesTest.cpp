// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/database/dbc/DbcFixture.h"

namespace {

class DbcSpecialMessages : public DbcFixture
{
protected:
    static QByteArray signalLine(const char *name, int startBit)
    {
        return QByteArray(" SG_ ") + name + " : " + QByteArray::number(startBit) + "|8@1+ (1,0) [0|1] \"\" Ecu\n";
    }
};

} // namespace

TEST_F(DbcSpecialMessages, HaveNoFlagWhateverTheirNumberAndSize)
{
    ASSERT_TRUE(parseBehindMessage("BO_ 2147483653 CAPL_MSG: 64 Ecu\n" + signalLine("A", 0) + "\n"));
    ASSERT_EQ(model.specialMessages.size(), 1U);
    const DbcMessage &special = model.specialMessages.at(0);
    EXPECT_EQ(special.id, 2147483653U);
    EXPECT_EQ(special.size, 64);
    EXPECT_FALSE(special.isExtended || special.isFd || special.isBrs || special.isRemote || special.isJ1939);
}

TEST_F(DbcSpecialMessages, OfAnySizeAreTaken)
{
    ASSERT_TRUE(parseBehindMessage("BO_ 5 CAPL_IDS: 200 Nobody\n" + signalLine("A", 0) + "\n"));
    EXPECT_EQ(model.specialMessages.at(0).size, 200);
    EXPECT_EQ(log.countContaining(warning, "Transmitter node"), 0U); // none of the checks is run
    EXPECT_EQ(log.countContaining(info, "Found special message"), 0U);
}

TEST_F(DbcSpecialMessages, TheirSignalsAreFoundByTheNumberAsWritten)
{
    ASSERT_TRUE(parseBehindMessage("BO_ 3221225472 VECTOR__INDEPENDENT_SIG_MSG: 0 Vector__XXX\n" + signalLine("A", 0) +
                                   "\nCM_ SG_ 3221225472 A \"free\";\nBA_ \"X\" SG_ 3221225472 A 5;\n"
                                   "VAL_ 3221225472 A 1 \"one\" ;\n"));
    const DbcSignal *found = model.findSignal(3221225472U, u"A");
    ASSERT_EQ(found, &model.specialMessages.at(0).signals.at(0));
    EXPECT_EQ(found->comment, QStringLiteral("free"));
    EXPECT_EQ(found->attributes.size(), 1U);
    EXPECT_EQ(found->valueDescriptions.at(1), QStringLiteral("one"));
    EXPECT_EQ(countWarningsAndErrors(), 0U);
}

TEST_F(DbcSpecialMessages, ARepeatedSignalNameIsNoWarningAndTheLaterIsFound)
{
    ASSERT_TRUE(parseBehindMessage("BO_ 5 CAPL_MSG: 8 Ecu\n" + signalLine("A", 0) + signalLine("A", 8) + "\n"));
    EXPECT_EQ(log.countContaining(warning, "Duplicate signal name"), 0U);
    EXPECT_EQ(model.specialMessages.at(0).signals.size(), 2U);
    EXPECT_EQ(model.findSignal(5, u"A")->startBit, 8);
}

TEST_F(DbcSpecialMessages, WinOverAnOrdinaryMessageOfTheirNumber)
{
    const QByteArray special = "BO_ 5 CAPL_MSG: 8 Ecu\n" + signalLine("A", 8) + "\n";
    const QByteArray ordinary = "BO_ 5 Other: 8 Ecu\n" + signalLine("A", 0) + signalLine("B", 16) + "\n";
    for (const QByteArray &text : {special + ordinary, ordinary + special}) {
        ASSERT_TRUE(parse(text));
        EXPECT_EQ(model.findMessage(5), &model.specialMessages.at(0));
        EXPECT_EQ(model.findSignal(5, u"A"), &model.specialMessages.at(0).signals.at(0));
        EXPECT_EQ(model.findSignal(5, u"B"), &model.messages.at(0).signals.at(1));
        EXPECT_EQ(log.countContaining(warning, "Duplicate signal name"), 0U);
    }
}

TEST_F(DbcSpecialMessages, WithoutSignalsAreLoggedByTheirNumberAsWritten)
{
    ASSERT_TRUE(parseBehindMessage("BO_ 3221225472 CAPL_MSG: 8 Ecu\n\n"));
    EXPECT_TRUE(log.has(warning, "Parse signals exception for message(CAPL_MSG, 3221225472): \n\n"));
}
