// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfSections.h"

#include "tests/support/LogCapture.h"
#include "tests/support/QuietLog.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <random>

namespace {

using Common::findLdfSection;
using Common::LdfBlockIndex;

struct NamedPattern
{
    explicit NamedPattern(const char *text)
        : name(QString::fromLatin1(text))
        , pattern(QStringLiteral("\\b%1\\s*\\{").arg(QRegularExpression::escape(name)))
    {
    }
    QString name;
    QRegularExpression pattern;
};

/// What the pattern finds: from behind it to the brace that closes it, trimmed.
std::optional<QString> expectedSection(const QString &text, const QRegularExpression &pattern)
{
    const auto match = pattern.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    int depth = 1;
    for (int index = match.capturedEnd(0); index < text.size(); ++index) {
        depth += text[index] == u'{' ? 1 : text[index] == u'}' ? -1 : 0;
        if (depth == 0)
            return text.mid(match.capturedEnd(0), index - match.capturedEnd(0)).trimmed();
    }
    return std::nullopt;
}

std::optional<QString> textOf(const std::optional<QStringView> &section)
{
    return section ? std::optional(section->toString()) : std::nullopt;
}

TEST(LdfSections, AreFoundWhereTheirPatternFindsThem)
{
    const QStringList atoms{QStringLiteral("X"),  QStringLiteral("a"), QStringLiteral("b"),  QStringLiteral("_"),
                            QStringLiteral("7"),  QStringLiteral("{"), QStringLiteral("X{"), QStringLiteral("aX {"),
                            QStringLiteral("}"),  QStringLiteral("}"), QStringLiteral("}"),  QStringLiteral(" "),
                            QStringLiteral("\n"), QStringLiteral("ä"), QStringLiteral("-"),  QStringLiteral("\u00A0")};
    const tztest::QuietLog quiet; // of all that is missing or unclosed
    const std::array sections{NamedPattern("X"), NamedPattern("aX"), NamedPattern("Xb"), NamedPattern("_"),
                              NamedPattern("7")};
    std::mt19937 random(20260723);
    int found = 0;
    for (int round = 0; round < 10'000; ++round) {
        QString text;
        for (unsigned length = static_cast<unsigned>(random() % 25); length > 0; --length)
            text += atoms[static_cast<int>(random() % static_cast<unsigned>(atoms.size()))];
        LdfBlockIndex blocks(text);
        for (const auto &[name, pattern] : sections) {
            const auto expected = expectedSection(text, pattern);
            ASSERT_EQ(textOf(findLdfSection(text, name)), expected) << name.toStdString() << ": " << text.toStdString();
            ASSERT_EQ(textOf(blocks.find(name)), expected) << name.toStdString() << ": " << text.toStdString();
            found += expected ? 1 : 0;
        }
    }
    EXPECT_GT(found, 1'000);
}

TEST(LdfSections, NameInsideAWordIsNone)
{
    const QString text = QStringLiteral("aX {1} X_ {2} Xb {3} X7 {4} X {5} X {6}");
    EXPECT_EQ(textOf(findLdfSection(text, u"X")), QStringLiteral("5"));
    EXPECT_EQ(textOf(LdfBlockIndex(text).find(u"X")), QStringLiteral("5"));
    EXPECT_EQ(textOf(findLdfSection(text, u"aX")), QStringLiteral("1"));
}

TEST(LdfSections, NameBehindALetterBeyondAsciiIsOne)
{
    const QString text = QStringLiteral("äX { 1 }");
    EXPECT_EQ(textOf(findLdfSection(text, u"X")), QStringLiteral("1"));
    EXPECT_EQ(textOf(LdfBlockIndex(text).find(u"X")), QStringLiteral("1"));
}

TEST(LdfSections, NameWithSomethingBeforeTheBraceIsPassedOver)
{
    const QString text = QStringLiteral("X: {1} X ; X\n\t { 2 { 3 } }");
    EXPECT_EQ(textOf(findLdfSection(text, u"X")), QStringLiteral("2 { 3 }"));
    EXPECT_EQ(textOf(LdfBlockIndex(text).find(u"X")), QStringLiteral("2 { 3 }"));
}

TEST(LdfSections, MissingAndUnclosedOnesAreLogged)
{
    tztest::LogCapture log;
    EXPECT_FALSE(findLdfSection(u"X { 1 }", u"Y"));
    EXPECT_FALSE(LdfBlockIndex(u"X { 1 }").find(u"Y"));
    EXPECT_EQ(log.count(0, "Section 'Y' not found in content"), 2U);
    EXPECT_FALSE(findLdfSection(u"X { 1 { }", u"X"));
    EXPECT_FALSE(LdfBlockIndex(u"X { 1 { }").find(u"X"));
    EXPECT_EQ(log.count(3, "Unmatched braces in section 'X'"), 2U);
}

TEST(LdfSections, PartsKeepBlanksAndDropNothings)
{
    const auto parts = Common::ldfParts(u";a; ;;b;", u';');
    ASSERT_EQ(parts.size(), 3U);
    EXPECT_EQ(parts[0].toString(), QStringLiteral("a"));
    EXPECT_TRUE(parts[1].isEmpty());
    EXPECT_EQ(parts[2].toString(), QStringLiteral("b"));
}

} // namespace
