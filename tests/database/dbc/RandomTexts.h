// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

#include <cstddef>
#include <random>

/// Texts to hold a reader against the pattern that it stands in for.
namespace RandomTexts {

/// Pieces that statements are made of, so that many random texts nearly are statements.
inline const QStringList &pieces()
{
    static const QStringList all = {
        QStringLiteral("BO_"),     QStringLiteral("SG_"),     QStringLiteral("BU_"),         QStringLiteral("CM_"),
        QStringLiteral("BA_"),     QStringLiteral("BA_DEF_"), QStringLiteral("BA_DEF_DEF_"), QStringLiteral("VAL_"),
        QStringLiteral(" "),       QStringLiteral(" "),       QStringLiteral("  "),          QStringLiteral("\n"),
        QStringLiteral("\t"),      QStringLiteral("\v"),      QStringLiteral("\u00a0"),      QStringLiteral("\u0085"),
        QStringLiteral("0"),       QStringLiteral("17"),      QStringLiteral("\u0663"),      QStringLiteral("-"),
        QStringLiteral("name"),    QStringLiteral("a1_"),     QStringLiteral("\u00e4"),      QStringLiteral("\""),
        QStringLiteral("\""),      QStringLiteral(";"),       QStringLiteral(";"),           QStringLiteral(":"),
        QStringLiteral("|"),       QStringLiteral("@0+"),     QStringLiteral("@1-"),         QStringLiteral("@2-"),
        QStringLiteral("("),       QStringLiteral(")"),       QStringLiteral("["),           QStringLiteral("]"),
        QStringLiteral("\"INT\""), QStringLiteral("\"a\" "),  QStringLiteral("1,0"),         QStringLiteral("0|8")};
    return all;
}

inline const QString &anyOf(const QStringList &texts, std::mt19937 &random)
{
    return texts.at(static_cast<int>(random() % static_cast<unsigned>(texts.size())));
}

/// A good text with a few pieces put in, taken out or exchanged; every other text is good but for nothing.
inline QString mutated(QString text, std::mt19937 &random)
{
    for (std::size_t count = random() % 5; count > 0; --count) {
        const int place = static_cast<int>(random() % static_cast<unsigned>(text.size() + 1));
        const int removed = static_cast<int>(random() % 4);
        text.replace(place, removed, random() % 3 == 0 ? QString() : anyOf(pieces(), random));
    }
    return text;
}

} // namespace RandomTexts
