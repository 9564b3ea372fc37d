// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/text/Sections.h"
#include "common/Log.h"
#include "tests/support/LogCapture.h"

#include <gtest/gtest.h>

#include <random>

using namespace Common;

namespace {

constexpr QStringView words[] = {u"VERSION", u"NS_",     u"VAL_TABLE_", u"BU_", u"BO_",
                                 u"CM_",     u"BA_DEF_", u"BA_",        u"VAL_"};

QString randomText(std::mt19937 &random)
{
    static const QStringList pieces = {
        QStringLiteral("BU_"), QStringLiteral("NS_"),     QStringLiteral("BS_"), QStringLiteral("VAL_"),
        QStringLiteral("BA_"), QStringLiteral("BA_DEF_"), QStringLiteral(":"),   QStringLiteral(" "),
        QStringLiteral("\n"),  QStringLiteral("x"),       QStringLiteral("7"),   QStringLiteral("_"),
        QStringLiteral("\t"),  QStringLiteral("\u00e4"),  QStringLiteral("BO_"), QStringLiteral("\n\n")};
    QString text;
    for (std::size_t count = random() % 12; count > 0; --count)
        text += pieces.at(static_cast<int>(random() % static_cast<unsigned>(pieces.size())));
    return text;
}

void expectSameRange(const std::optional<Sections::Range> &found, const QRegularExpressionMatch &match,
                     const QString &text)
{
    ASSERT_EQ(found.has_value(), match.hasMatch()) << text.toStdString();
    if (found) {
        EXPECT_EQ(found->begin, match.capturedStart()) << text.toStdString();
        EXPECT_EQ(found->end, match.capturedEnd()) << text.toStdString();
    }
}

} // namespace

TEST(Sections, WordsAreFoundAsThePatternFindsThem)
{
    const QRegularExpression pattern(QStringLiteral("\\b(VERSION|NS_|VAL_TABLE_|BU_|BO_|CM_|BA_DEF_|BA_|VAL_)\\b"));
    std::mt19937 random(1);
    for (int run = 0; run < 20000; ++run) {
        const QString text = randomText(random);
        const int from = text.isEmpty() ? 0 : static_cast<int>(random() % static_cast<unsigned>(text.size()));
        expectSameRange(Sections::findWord(text, words, from), pattern.match(text, from), text);
    }
}

TEST(Sections, LineHeadsAreFoundAsThePatternFindsThem)
{
    const QRegularExpression pattern(QStringLiteral("^NS_\\s*:"), QRegularExpression::MultilineOption);
    std::mt19937 random(2);
    for (int run = 0; run < 20000; ++run) {
        const QString text = randomText(random);
        const int from = text.isEmpty() ? 0 : static_cast<int>(random() % static_cast<unsigned>(text.size()));
        expectSameRange(Sections::findLineHead(text, u"NS_", from), pattern.match(text, from), text);
    }
}

TEST(Sections, ASectionIsTrimmedAndEndsAtTheNextWord)
{
    const QString text = QStringLiteral("BU_SG_REL_\nBU_: A B\n C\n\nBO_ 1");
    EXPECT_EQ(Sections::findSection(text, u"BU_", words)->toString(), QStringLiteral(": A B\n C"));
}

TEST(Sections, ASectionMayRunToTheEnd)
{
    const QString text = QStringLiteral("BU_: A B ");
    EXPECT_EQ(Sections::findSection(text, u"BU_", words)->toString(), QStringLiteral(": A B"));
}

TEST(Sections, AMissingSectionIsLoggedAtDebugLevel)
{
    const tztest::LogCapture log;
    EXPECT_FALSE(Sections::findSection(QString(), u"BU_", words));
    EXPECT_TRUE(log.has(LogLevel::debug, "Section 'BU_' not found in content"));
}

TEST(Sections, AFailureOfTheEngineIsAnErrorLineAndNoMatch)
{
    const tztest::LogCapture log;
    QString broken = QStringLiteral("x");
    broken[0] = QChar(0xD800);
    EXPECT_FALSE(Sections::match(QRegularExpression(QStringLiteral("y?")), broken).hasMatch());
    EXPECT_EQ(log.countContaining(LogLevel::error, "could not be applied"), 1U);
}

TEST(Sections, EveryMatchIsHandedOutInOrder)
{
    const tztest::LogCapture log;
    QStringList found;
    const auto take = [&found](const QRegularExpressionMatch &match) { found += match.captured(1); };
    Sections::forEachMatch(QRegularExpression(QStringLiteral("(\\w)=")), QStringLiteral("a= b c=d="), take);
    EXPECT_EQ(found, QStringList({QStringLiteral("a"), QStringLiteral("c"), QStringLiteral("d")}));
    EXPECT_EQ(log.countContaining(LogLevel::error, ""), 0U);
}

TEST(Sections, AFailureOfTheEngineEndsTheMatchesWithAnErrorLine)
{
    const tztest::LogCapture log;
    int found = 0;
    const auto count = [&found](const QRegularExpressionMatch &) { ++found; };
    QString broken = QStringLiteral("x");
    broken[0] = QChar(0xD800);
    Sections::forEachMatch(QRegularExpression(QStringLiteral("y?")), broken, count);
    EXPECT_EQ(found, 0);
    EXPECT_EQ(log.countContaining(LogLevel::error, "could not be applied"), 1U);
    // The limit is too low for what stands behind the first match.
    const QRegularExpression limited(QStringLiteral("(*LIMIT_MATCH=50)(*NO_JIT)x|(?:a+)+b"));
    ASSERT_TRUE(limited.isValid());
    Sections::forEachMatch(limited, u'x' + QString(100, u'a'), count);
    EXPECT_EQ(found, 1);
    EXPECT_EQ(log.countContaining(LogLevel::error, "could not be applied"), 2U);
}
