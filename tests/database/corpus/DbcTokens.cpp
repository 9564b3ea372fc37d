// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/database/corpus/DbcTokens.h"

#include <algorithm>

namespace tzcorpus {

namespace {

constexpr QStringView loneSigns = u":|@,;()[]";

bool endsWord(QChar character)
{
    return character.isSpace() || character == u'"' || loneSigns.contains(character);
}

// A quote behind a backslash does not end a text.
qsizetype endOfQuoted(const QString &text, qsizetype begin)
{
    for (int at = static_cast<int>(begin) + 1; at < text.size(); ++at) {
        if (text.at(at) == u'"' && text.at(at - 1) != u'\\')
            return at + 1;
    }
    return text.size();
}

qsizetype endOfToken(const QString &text, qsizetype begin)
{
    const QChar first = text.at(static_cast<int>(begin));
    if (first == u'"')
        return endOfQuoted(text, begin);
    if (loneSigns.contains(first))
        return begin + 1;
    return std::find_if(text.begin() + begin, text.end(), endsWord) - text.begin();
}

} // namespace

std::vector<Token> tokensOf(const QString &text)
{
    std::vector<Token> tokens;
    int line = 0;
    bool opensLine = true;
    for (qsizetype at = 0; at < text.size();) {
        const QChar character = text.at(static_cast<int>(at));
        if (character.isSpace()) {
            opensLine = opensLine || character == u'\n';
            line += character == u'\n' ? 1 : 0;
            ++at;
            continue;
        }
        Token token;
        token.begin = at;
        token.end = at = endOfToken(text, at);
        const QStringView whole = QStringView(text).mid(token.begin, token.end - token.begin);
        if (whole.startsWith(u"//")) {
            at = std::find(text.begin() + at, text.end(), u'\n') - text.begin();
            continue;
        }
        token.isQuoted = character == u'"';
        token.text = token.isQuoted ? whole.mid(1).chopped(whole.endsWith(u'"') && whole.size() > 1 ? 1 : 0).toString()
                                    : whole.toString();
        token.opensLine = opensLine;
        token.line = line;
        line += static_cast<int>(std::count(whole.begin(), whole.end(), u'\n'));
        opensLine = false;
        tokens.push_back(token);
    }
    return tokens;
}

} // namespace tzcorpus
