// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringView>

namespace Common {

/// The text without the pair of quotes that encloses it; without such a pair, as it is.
inline QStringView withoutQuotes(QStringView text)
{
    const bool isQuoted = text.size() >= 2 && text.front() == u'"' && text.back() == u'"';
    return isQuoted ? text.mid(1, text.size() - 2) : text;
}

} // namespace Common
