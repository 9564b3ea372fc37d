// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/text/JoinedStatements.h"

#include <gtest/gtest.h>

#include <QStringList>

namespace {

QStringList joined(const QString &text)
{
    QStringList statements;
    Common::JoinedStatements all(text, u"VAL_");
    while (const auto statement = all.next())
        statements.append(statement->toString());
    return statements;
}

} // namespace

TEST(JoinedStatements, AStatementOfOneLineIsTrimmed)
{
    EXPECT_EQ(joined(QStringLiteral("  VAL_ 1 A 0 \"x\" ;  \n")), QStringList(QStringLiteral("VAL_ 1 A 0 \"x\" ;")));
}

TEST(JoinedStatements, LinesAreJoinedByOneBlank)
{
    EXPECT_EQ(joined(QStringLiteral("VAL_ 1 A 0 \"x\"\n\n   1 \"y\"\n;\n")),
              QStringList(QStringLiteral("VAL_ 1 A 0 \"x\" 1 \"y\" ;")));
}

TEST(JoinedStatements, ALineOfBlanksAddsABlankToAnOpenStatement)
{
    EXPECT_EQ(joined(QStringLiteral("VAL_ 1 A\n  \n;")), QStringList(QStringLiteral("VAL_ 1 A  ;")));
}

TEST(JoinedStatements, AnOpeningReplacesWhatWasOpen)
{
    EXPECT_EQ(joined(QStringLiteral("VAL_ 1 A 0\n1\nVAL_ 2 B 0 ;\n")), QStringList(QStringLiteral("VAL_ 2 B 0 ;")));
}

TEST(JoinedStatements, OnlyTheKeywordAndABlankOpen)
{
    EXPECT_TRUE(joined(QStringLiteral("VAL_TABLE_ A 0 ;\nVAL_\tB ;\nXVAL_ C ;\nCM_ \"VAL_ 1 A ;\n")).isEmpty());
}

TEST(JoinedStatements, LinesOutsideAStatementAreIgnored)
{
    EXPECT_EQ(joined(QStringLiteral("x ;\nVAL_ 1 A ;\n2 \"y\" ;\nVAL_ 3 B ;")),
              (QStringList{QStringLiteral("VAL_ 1 A ;"), QStringLiteral("VAL_ 3 B ;")}));
}

TEST(JoinedStatements, AnUnclosedStatementAtTheEndIsDropped)
{
    EXPECT_TRUE(joined(QStringLiteral("VAL_ 1 A\n0 \"x\"")).isEmpty());
    EXPECT_TRUE(joined(QString()).isEmpty());
}

TEST(JoinedStatements, SeveralJoinedStatementsDoNotMix)
{
    EXPECT_EQ(joined(QStringLiteral("VAL_ 1 A\n0 ;\nVAL_ 2 B\n1\n2 ;\n")),
              (QStringList{QStringLiteral("VAL_ 1 A 0 ;"), QStringLiteral("VAL_ 2 B 1 2 ;")}));
}

TEST(JoinedStatements, AStatementOfManyLinesTakesLinearTime)
{
    QString text = QStringLiteral("VAL_ 1 A\n");
    for (int line = 0; line < 300000; ++line)
        text += QStringLiteral("1 \"x\"\n");
    EXPECT_EQ(joined(text + u';').size(), 1);
}
