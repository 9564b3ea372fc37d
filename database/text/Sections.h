// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRegularExpression>
#include <QString>
#include <QStringView>

#include <functional>
#include <optional>
#include <span>

/// Where sections begin and end in a prepared text. All views are into the text that was passed in. Linear.
namespace Common::Sections {

/// A range of a text.
struct Range
{
    qsizetype begin = 0;
    qsizetype end = 0; ///< one behind the last character
};

/// First match of `\b(<word>|<word>...)\b` from @p from on, for words made of letters, digits and underscores: the next
/// whole word that is one of them.
std::optional<Range> findWord(QStringView text, std::span<const QStringView> words, qsizetype from = 0);

/// First match of `^<keyword>\s*:` from @p from on, where `^` is the begin of any line.
std::optional<Range> findLineHead(QStringView text, QStringView keyword, qsizetype from = 0);

/// The section @p name, trimmed: from the end of that word to the next word of @p endWords, or to the end of the text.
/// Without the word, logs so at debug level.
std::optional<QStringView> findSection(QStringView text, QStringView name, std::span<const QStringView> endWords);

/// Applies a pattern to a short text. A failure of the engine (its limits, a broken text) is logged at error level and
/// gives a match that has none.
QRegularExpressionMatch match(const QRegularExpression &pattern, const QString &text);

/// Hands every match of a pattern to @p take, in order. A failure of the engine is logged the same way and ends them.
void forEachMatch(const QRegularExpression &pattern, const QString &text,
                  const std::function<void(const QRegularExpressionMatch &)> &take);

} // namespace Common::Sections
