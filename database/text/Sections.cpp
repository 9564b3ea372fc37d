// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/text/Sections.h"

#include "common/Log.h"
#include "database/text/LogText.h"

namespace Common::Sections {

QRegularExpressionMatch match(const QRegularExpression &pattern, const QString &text, int offset)
{
    QRegularExpressionMatch result = pattern.match(text, offset);
    if (!result.isValid())
        Common::logError("The pattern {} could not be applied to a text of {} characters", LogText(pattern.pattern()),
                         text.size());
    return result;
}

std::optional<QStringView> between(const QString &text, const QRegularExpression &begin, const QRegularExpression &end)
{
    const QRegularExpressionMatch beginMatch = match(begin, text);
    if (!beginMatch.hasMatch())
        return std::nullopt;
    const int from = beginMatch.capturedEnd();
    const QRegularExpressionMatch endMatch = match(end, text, from);
    const int to = endMatch.hasMatch() ? endMatch.capturedStart() : text.size();
    return QStringView(text).mid(from, to - from).trimmed();
}

QRegularExpression namePattern(const QString &name)
{
    return QRegularExpression(QStringLiteral("\\b%1\\b").arg(QRegularExpression::escape(name)));
}

} // namespace Common::Sections
