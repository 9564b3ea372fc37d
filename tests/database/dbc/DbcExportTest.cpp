// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcExport.h"

#include "tests/database/dbc/DbcSamples.h"

#include <gtest/gtest.h>

using tztest::makeMessage;
using tztest::makeSignal;

TEST(DbcExport, GoodMessagesHaveNoFinding)
{
    QString text = "from before";
    EXPECT_TRUE(validateMessagesForExport(
        {makeMessage(1, "A", {makeSignal("S")}), makeMessage(2, "A", {makeSignal("S")})}, text));
    EXPECT_EQ(text, ""); // names are not compared across messages
}

TEST(DbcExport, AnEmptyListIsFalse)
{
    QString text;
    EXPECT_FALSE(validateMessagesForExport({}, text));
    EXPECT_EQ(text, "The current file dbc message is empty");
}

TEST(DbcExport, ARepeatedIdentifierIsFalseAndShownWithoutItsMark)
{
    QString text;
    EXPECT_FALSE(validateMessagesForExport({makeMessage(0x9ABCDEF0, "A"), makeMessage(0x9ABCDEF0, "B")}, text));
    EXPECT_EQ(text, "Duplicate message ID found: 0x1ABCDEF0");
}

TEST(DbcExport, IdentifiersThatDifferInTheirMarkAreTwo)
{
    QString text;
    EXPECT_TRUE(validateMessagesForExport({makeMessage(0x80000001, "A"), makeMessage(1, "B")}, text));
}

TEST(DbcExport, ARepeatedSignalNameReturnsTrueWithText)
{
    QString text;
    EXPECT_TRUE(validateMessagesForExport(
        {makeMessage(1, "A", {makeSignal("S"), makeSignal("S"), makeSignal("%1"), makeSignal("S"), makeSignal("%1")})},
        text));
    EXPECT_EQ(text, "Duplicate signal name found: S\nDuplicate signal name found: S\n"
                    "Duplicate signal name found: %1\n");
}

TEST(DbcExport, ARepeatedIdentifierReplacesEarlierFindings)
{
    QString text;
    EXPECT_FALSE(validateMessagesForExport(
        {makeMessage(1, "A", {makeSignal("S"), makeSignal("S")}), makeMessage(1, "B")}, text));
    EXPECT_EQ(text, "Duplicate message ID found: 0x1");
}
