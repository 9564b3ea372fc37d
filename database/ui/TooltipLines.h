// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

/// The lines of HTML below the title of a database tool tip, one for each fact. Labels are ours; every text that comes
/// from a file is escaped here.
class TooltipLines
{
public:
    /// "Label: text".
    void add(const QString &label, const QString &text);
    /// The label, and below it each item, indented; @p more, when not empty, stands last.
    /// @param between  stands between them in the source; it does not show
    void addItems(const QString &label, const QStringList &items, const QString &more,
                  const QString &between = QStringLiteral("\n"));
    /// A comment; nothing for an empty one.
    void addComment(const QString &comment);

    const QStringList &html() const { return m_html; }

private:
    QStringList m_html;
};

/// The first 100 characters, with @p ending behind them when there are more.
QString shortComment(const QString &comment, const QString &ending);
