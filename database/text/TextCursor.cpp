// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/text/TextCursor.h"

namespace Common {

qsizetype findLiteral(QStringView text, QStringView literal, qsizetype from)
{
    if (literal.isEmpty())
        return from <= text.size() ? from : -1;
    const QStringView tail = literal.mid(1);
    // The toolkit finds one character with vector instructions, but a short literal one character at a time.
    for (qsizetype found = text.indexOf(literal[0], from); found >= 0; found = text.indexOf(literal[0], found + 1)) {
        if (text.size() - found >= literal.size() && text.mid(found + 1, tail.size()) == tail)
            return found;
    }
    return -1;
}

} // namespace Common
