// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <vector>

namespace tzcorpus {

/// A word, a sign or a quoted text of a DBC file.
struct Token
{
    QString text; ///< without the quotes
    bool isQuoted = false;
    bool opensLine = false; ///< nothing but blanks stands before it in its line
    int line = 0;
    qsizetype begin = 0; ///< place in the text
    qsizetype end = 0;   ///< place behind it

    bool is(const char *word) const { return !isQuoted && text == QLatin1String(word); }
};

/// Cuts @p text into tokens. Signs that stand alone are `:|@,;()[]`; "//" hides the rest of its line.
std::vector<Token> tokensOf(const QString &text);

} // namespace tzcorpus
