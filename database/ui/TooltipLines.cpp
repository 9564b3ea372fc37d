// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ui/TooltipLines.h"

#include <QCoreApplication>

namespace {

constexpr int shortCommentLength = 100;

QString labelHtml(const QString &label)
{
    return QStringLiteral("<span class='label'>") + label + QStringLiteral("</span>");
}

} // namespace

void TooltipLines::add(const QString &label, const QString &text)
{
    m_html.append(labelHtml(label) + QLatin1Char(' ') + text.toHtmlEscaped());
}

void TooltipLines::addItems(const QString &label, const QStringList &items, const QString &more, const QString &between)
{
    QStringList rows;
    for (const QString &item : more.isEmpty() ? items : items + QStringList(more))
        rows.append(QStringLiteral("<div class='indent'>") + item.toHtmlEscaped() + QStringLiteral("</div>"));
    m_html.append(labelHtml(label) + rows.join(between));
}

void TooltipLines::addComment(const QString &comment)
{
    if (comment.isEmpty())
        return;
    m_html.append(labelHtml(QCoreApplication::translate("TooltipLines", "Comment:")) +
                  QStringLiteral(" <span class='comment'>") + comment.toHtmlEscaped() + QStringLiteral("</span>"));
}

QString shortComment(const QString &comment, const QString &ending)
{
    if (comment.size() <= shortCommentLength)
        return comment;
    const bool cutsPair = comment.at(shortCommentLength - 1).isHighSurrogate();
    return comment.left(cutsPair ? shortCommentLength - 1 : shortCommentLength) + ending;
}
