// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfPatterns.h"

#include "common/Log.h"

#include <cmath>

namespace Common {

QRegularExpressionMatch firstLdfMatch(const QRegularExpression &pattern, const QString &text)
{
    QRegularExpressionMatch match = pattern.match(text);
    if (!match.isValid())
        logError("Pattern cannot be applied to the text, taken as not found: {}", pattern.pattern().toStdString());
    return match;
}

std::uint32_t ldfUnsigned(const QString &text, int base)
{
    return text.toUInt(nullptr, base); // 0 where it fails
}

double ldfDouble(const QString &text)
{
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    return isNumber && std::isfinite(number) ? number : 0.0;
}

} // namespace Common
