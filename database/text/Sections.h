// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRegularExpression>
#include <QString>
#include <QStringView>

#include <optional>

/// Where sections begin and end in a prepared text.
namespace Common::Sections {

/// The range between two matches, trimmed: from the end of the first match of @p begin to the start of the next match
/// of @p end or to the text's end. It views @p text. Nothing where @p begin has no match. Nothing is logged but a
/// failure of the engine.
std::optional<QStringView> between(const QString &text, const QRegularExpression &begin, const QRegularExpression &end);

/// `\b<name>\b` with the name escaped.
QRegularExpression namePattern(const QString &name);

/// The first match from @p offset on. A failure of the engine (its limits, a broken text) is logged at error level and
/// gives a match without a match.
QRegularExpressionMatch match(const QRegularExpression &pattern, const QString &text, int offset = 0);

} // namespace Common::Sections
