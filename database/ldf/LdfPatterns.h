// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRegularExpression>
#include <QString>

#include <cstdint>

namespace Common {

/// The first match in @p text. Where the pattern engine gives up, that is logged as an error and counts as no match.
QRegularExpressionMatch firstLdfMatch(const QRegularExpression &pattern, const QString &text);

// Numbers in the C locale. What is no number, does not fit the type or is not finite reads 0.

std::uint32_t ldfUnsigned(const QString &text, int base = 10); ///< base 0: 0x1F, 017 and 15 alike
double ldfDouble(const QString &text);

} // namespace Common
