// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringView>

namespace Common {

/// Cuts the first line off @p rest and returns it without its "\n"; empty lines come too.
inline QStringView takeLine(QStringView &rest)
{
    const qsizetype end = rest.indexOf(u'\n');
    const QStringView line = end < 0 ? rest : rest.left(end);
    rest = end < 0 ? QStringView() : rest.mid(end + 1);
    return line;
}

} // namespace Common
