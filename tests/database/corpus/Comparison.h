// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDebug>
#include <QString>
#include <QStringList>

#include <cmath>
#include <type_traits>
#include <utility>

namespace tzcorpus {

/// Collects differences between two records, under the name of what is compared.
class Comparison
{
public:
    explicit Comparison(QString where)
        : m_where(std::move(where))
    {
    }

    template <typename T> void field(const char *name, const T &expected, const T &actual)
    {
        if (isSame(expected, actual))
            return;
        QString line;
        QDebug(&line).nospace() << qUtf8Printable(m_where) << ' ' << name << ": expected " << expected << ", is "
                                << actual;
        m_differences += line;
    }
    void append(const QStringList &differences) { m_differences += differences; }
    const QStringList &differences() const { return m_differences; }

private:
    template <typename T> static bool isSame(const T &left, const T &right)
    {
        if constexpr (std::is_floating_point_v<T>) {
            if (std::isnan(left) && std::isnan(right))
                return true;
        }
        return left == right;
    }

    QString m_where;
    QStringList m_differences;
};

} // namespace tzcorpus
