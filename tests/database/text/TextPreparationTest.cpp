// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/text/TextFile.h"
#include "tests/support/ThreadSeconds.h"

#include <gtest/gtest.h>

#include <QRegularExpression>

#include <random>

using Common::TextFile::prepare;

namespace {

QString preparedByPattern(QString text)
{
    static const QRegularExpression comment(QStringLiteral(R"(/\*[^*]*\*+(?:[^/*][^*]*\*+)*/)"));
    text.remove(comment);
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    text.replace(u'\r', u'\n');
    return text;
}

} // namespace

TEST(TextPreparation, DoesWhatThePatternDoes)
{
    const QString alphabet = QStringLiteral("/*/*/**\r\n\rax\"");
    std::mt19937 random(3);
    for (int run = 0; run < 50000; ++run) {
        QString text;
        for (std::size_t count = random() % 24; count > 0; --count)
            text += alphabet.at(static_cast<int>(random() % static_cast<unsigned>(alphabet.size())));
        ASSERT_EQ(prepare(text).toStdString(), preparedByPattern(text).toStdString()) << text.toStdString();
    }
}

TEST(TextPreparation, ALineEndMadeByACommentsRemovalIsOne)
{
    EXPECT_EQ(prepare(QStringLiteral("a\r/* x */\nb")), QStringLiteral("a\nb"));
}

TEST(TextPreparation, LoneReturnsAreLineEnds)
{
    EXPECT_EQ(prepare(QStringLiteral("a\rb\r\nc\n\rd")), QStringLiteral("a\nb\nc\n\nd"));
}

TEST(TextPreparation, AnUnclosedCommentStays)
{
    EXPECT_EQ(prepare(QStringLiteral("a /* b\r\nc")), QStringLiteral("a /* b\nc"));
    EXPECT_EQ(prepare(QStringLiteral("/*/")), QStringLiteral("/*/"));
}

TEST(TextPreparation, CommentsGoInsideQuotesToo)
{
    EXPECT_EQ(prepare(QStringLiteral("\"a /* b */ c\"")), QStringLiteral("\"a  c\""));
}

TEST(TextPreparation, ManyUnclosedOpeningsTakeLinearTime)
{
    const double start = tztest::threadSeconds();
    const QString text = QStringLiteral("/* ").repeated(5'000'000);
    EXPECT_EQ(prepare(text + u'\r').size(), text.size() + 1);
    EXPECT_LT(tztest::threadSeconds() - start, 5.0);
}

TEST(TextPreparation, OneLargeCommentIsRemoved)
{
    EXPECT_EQ(prepare(QStringLiteral("a/*") + QStringLiteral("* x").repeated(2'000'000) + QStringLiteral("*/b")),
              QStringLiteral("ab"));
}
