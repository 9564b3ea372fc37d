// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/text/LogText.h"

#include <QString>

#include <gtest/gtest.h>

using Common::LogText;

namespace {

std::string shown(const QString &text)
{
    return fmt::format("<{}>", LogText(text));
}

QString letters(qsizetype count)
{
    return QString(static_cast<int>(count), u'a');
}

} // namespace

TEST(LogText, IsWrittenAsUtf8)
{
    EXPECT_EQ(shown(QStringLiteral("k\u00F6rper \u672A\u77E5")), "<k\xC3\xB6rper \xE6\x9C\xAA\xE7\x9F\xA5>");
    EXPECT_EQ(shown(QString()), "<>");
}

TEST(LogText, IsWholeUpToItsLimit)
{
    const QString longest = letters(LogText::longest);
    EXPECT_EQ(shown(longest), '<' + longest.toStdString() + '>');
}

TEST(LogText, IsCutBeyondItsLimit)
{
    EXPECT_EQ(shown(letters(LogText::longest + 1)), '<' + letters(LogText::longest).toStdString() + "...>");
    EXPECT_EQ(shown(letters(1'000'000)), '<' + letters(LogText::longest).toStdString() + "...>");
}

TEST(LogText, IsWholeWhereAskedFor)
{
    const QString text = letters(LogText::longest * 3);
    EXPECT_EQ(fmt::format("<{}>", LogText::whole(text)), '<' + text.toStdString() + '>');
}

TEST(LogText, IsNotCutWithinAPairOfSurrogates)
{
    const QString text = letters(LogText::longest - 1) + QString::fromUtf8("\xF0\x9F\x9A\x97") + letters(5);
    EXPECT_EQ(shown(text), '<' + letters(LogText::longest - 1).toStdString() + "...>");
}
