// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcScan.h"
#include "tests/database/dbc/DbcPatterns.h"
#include "tests/database/dbc/RandomTexts.h"

#include <gtest/gtest.h>

#include <QRegularExpression>
#include <QStringList>

#include <optional>

namespace {

using RandomTexts::anyOf;
using RandomTexts::mutated;

constexpr int runs = 40000;

// Short texts of separators and what they separate: blanks of ASCII and others, commas, quotes, words, nothing.
QString randomList(std::mt19937 &random)
{
    static const QStringList pieces = {
        QStringLiteral(" "),      QStringLiteral(" "),      QStringLiteral("  "),     QStringLiteral("\n"),
        QStringLiteral("\t"),     QStringLiteral("\v"),     QStringLiteral("\f"),     QStringLiteral("\r"),
        QStringLiteral("\u00a0"), QStringLiteral("\u0085"), QStringLiteral("\u2003"), QStringLiteral("\u00e4"),
        QStringLiteral("\u0663"), QStringLiteral("\u4e2d"), QStringLiteral("a"),      QStringLiteral("Ecu_1"),
        QStringLiteral("7"),      QStringLiteral("-1.5"),   QStringLiteral(","),      QStringLiteral(","),
        QStringLiteral(",,"),     QStringLiteral("\""),     QStringLiteral("\""),     QStringLiteral("\",\""),
        QStringLiteral("\"\""),   QStringLiteral("\" , \"")};
    QString text;
    for (std::size_t count = random() % 9; count > 0; --count)
        text += anyOf(pieces, random);
    return text;
}

QStringList wordsOf(const QString &text)
{
    QStringList words;
    qsizetype position = 0;
    for (QStringView word = DbcScan::nextWord(text, position); !word.isEmpty();
         word = DbcScan::nextWord(text, position))
        words.append(word.toString());
    return words;
}

} // namespace

TEST(DbcScanParts, VersionsAsThePattern)
{
    const QStringList samples = {QStringLiteral("VERSION \"1.0\""),     QStringLiteral("VERSION\n\t\"\"\n"),
                                 QStringLiteral("VERSION\"1\" "),       QStringLiteral("VERSIONVERSION \"a\nb\""),
                                 QStringLiteral("VERSION \u00a0\"x\""), QStringLiteral("VERSION \"open"),
                                 QStringLiteral("version \"x\" ")};
    const QRegularExpression pattern(DbcPatterns::version);
    std::mt19937 random(21);
    int found = 0;
    for (int run = 0; run < runs; ++run) {
        const QString text = mutated(anyOf(samples, random), random) + mutated(anyOf(samples, random), random);
        const auto match = pattern.match(text);
        const auto version = DbcScan::findVersion(text);
        ASSERT_EQ(version.has_value(), match.hasMatch()) << text.toStdString();
        if (!version)
            continue;
        ASSERT_EQ(version->toString(), match.captured(1)) << text.toStdString();
        ++found;
    }
    EXPECT_GT(found, runs / 4);
}

TEST(DbcScanParts, NodeNamesAsThePattern)
{
    const QRegularExpression pattern(DbcPatterns::nodeName);
    std::mt19937 random(22);
    int found = 0;
    for (int run = 0; run < runs; ++run) {
        QString name = randomList(random).remove(u'\n');
        const bool isName = DbcScan::isNodeName(name);
        ASSERT_EQ(isName, pattern.match(name).hasMatch()) << name.toStdString();
        found += isName ? 1 : 0;
    }
    EXPECT_GT(found, runs / 100);
    EXPECT_FALSE(DbcScan::isNodeName(QString()));
}

TEST(DbcScanParts, WordsAsTheTextSplitAtBlanks)
{
    const QRegularExpression blanks(DbcPatterns::blanks);
    std::mt19937 random(23);
    for (int run = 0; run < runs; ++run) {
        const QString text = randomList(random);
        ASSERT_EQ(wordsOf(text), text.split(blanks, Qt::SkipEmptyParts)) << text.toStdString();
    }
}

TEST(DbcScanParts, TwoWordsAsTheTextSplitAtBlanksWithItsEmptyParts)
{
    const QRegularExpression blanks(DbcPatterns::blanks);
    std::mt19937 random(24);
    int found = 0;
    for (int run = 0; run < runs; ++run) {
        const QString text = randomList(random);
        const QStringList parts = text.split(blanks, Qt::KeepEmptyParts);
        const auto two = DbcScan::twoWords(text);
        ASSERT_EQ(two.has_value(), parts.size() == 2) << text.toStdString();
        if (!two)
            continue;
        ASSERT_EQ((QStringList{two->front().toString(), two->back().toString()}), parts) << text.toStdString();
        ++found;
    }
    EXPECT_GT(found, runs / 10);
}

TEST(DbcScanParts, ReceiversAsTheTextSplitAtThePattern)
{
    const QRegularExpression separator(DbcPatterns::receivers);
    std::mt19937 random(25);
    for (int run = 0; run < runs; ++run) {
        const QString text = randomList(random);
        ASSERT_EQ(DbcScan::splitReceivers(text), text.split(separator, Qt::SkipEmptyParts)) << text.toStdString();
    }
}

TEST(DbcScanParts, EnumValuesAsTheTextSplitAtThePatternWithoutItsOuterQuotes)
{
    const QRegularExpression leading(QStringLiteral(R"(^\s*")"));
    const QRegularExpression trailing(QStringLiteral(R"("\s*$)"));
    const QRegularExpression separator(DbcPatterns::enumSeparator);
    std::mt19937 random(26);
    int found = 0;
    for (int run = 0; run < runs; ++run) {
        const QString text = randomList(random).trimmed();
        const QStringList wanted = QString(text).remove(leading).remove(trailing).split(separator);
        ASSERT_EQ(DbcScan::splitEnumValues(text), wanted) << text.toStdString();
        found += wanted.size() > 1 ? 1 : 0;
    }
    EXPECT_GT(found, runs / 10);
}
