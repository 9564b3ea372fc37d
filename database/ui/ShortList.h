// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

/// The first items of a list, and how many there are beyond them.
class ShortList
{
public:
    explicit ShortList(int limit)
        : m_limit(limit)
    {
    }
    void append(const QString &item)
    {
        if (m_count++ < m_limit)
            m_items.append(item);
    }
    const QStringList &items() const { return m_items; }
    /// @param text  with %1 for the number of items left out; the result is empty when there are none
    QString more(const QString &text) const { return m_count > m_limit ? text.arg(m_count - m_limit) : QString(); }

private:
    int m_limit;
    int m_count = 0;
    QStringList m_items;
};
