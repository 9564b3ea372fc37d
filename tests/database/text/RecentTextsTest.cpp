// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/text/RecentTexts.h"

#include <gtest/gtest.h>

#include <QStringList>

#include <functional>
#include <new>

TEST(RecentTexts, EqualTextsShareTheirMemory)
{
    Common::RecentTexts<QString> texts;
    const QString line = QStringLiteral("km/h km/h");
    const QString first = texts.valueOf(QStringView(line).left(4), std::identity());
    const QString second = texts.valueOf(QStringView(line).right(4), std::identity());
    EXPECT_EQ(first, QStringLiteral("km/h"));
    EXPECT_EQ(first, second);
    EXPECT_EQ(first.constData(), second.constData());
    EXPECT_NE(first.constData(), line.constData()); // the line itself can go
}

TEST(RecentTexts, AnEmptyTextIsAnEmptyValue)
{
    Common::RecentTexts<QString> texts;
    EXPECT_TRUE(texts.valueOf(u"", std::identity()).isEmpty());
}

TEST(RecentTexts, AValueIsMadeOnceForATextAskedAgain)
{
    Common::RecentTexts<QStringList> lists;
    int made = 0;
    const auto split = [&made](const QString &text) {
        ++made;
        return text.split(u',');
    };
    for (int ask = 0; ask < 3; ++ask)
        EXPECT_EQ(lists.valueOf(u"A,B", split), (QStringList{QStringLiteral("A"), QStringLiteral("B")}));
    EXPECT_EQ(made, 1);
}

TEST(RecentTexts, ManyTextsComeOutAsTheyWentIn)
{
    Common::RecentTexts<QString> texts;
    for (int round = 0; round < 2; ++round) {
        for (int number = 0; number < 5000; ++number) {
            const QString text = QString::number(number);
            ASSERT_EQ(texts.valueOf(text, std::identity()), text);
        }
    }
}

TEST(RecentTexts, ATextWhoseValueCannotBeMadeIsAskedAnew)
{
    Common::RecentTexts<QString> texts;
    const auto fails = [](const QString &) -> QString { throw std::bad_alloc(); };
    EXPECT_THROW(texts.valueOf(u"km/h", fails), std::bad_alloc);
    EXPECT_EQ(texts.valueOf(u"km/h", std::identity()), QStringLiteral("km/h"));
}
