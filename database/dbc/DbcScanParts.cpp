// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcScan.h"
#include "database/text/TextCursor.h"

#include <algorithm>

using Common::TextCursor;

namespace DbcScan {

namespace {

constexpr QStringView versionKeyword = u"VERSION";

bool isNoBlank(QChar character)
{
    return !Common::TextClass::isBlank(character);
}

bool isSeparator(QChar character)
{
    return character == u',' || Common::TextClass::isBlank(character);
}

// `\s*,\s*"` behind a quote.
bool takeEnumSeparator(TextCursor &cursor)
{
    cursor.takeBlanks();
    if (!cursor.take(u','))
        return false;
    cursor.takeBlanks();
    return cursor.take(u'"');
}

} // namespace

std::optional<QStringView> findVersion(QStringView text)
{
    for (qsizetype found = Common::findLiteral(text, versionKeyword, 0); found >= 0;
         found = Common::findLiteral(text, versionKeyword, found + 1)) {
        TextCursor cursor(text, found + versionKeyword.size());
        if (cursor.takeBlanks().isEmpty() || !cursor.take(u'"'))
            continue;
        QStringView version;
        if (!cursor.takeUpTo(u'"', version))
            return std::nullopt; // no quote is left
        return version;
    }
    return std::nullopt;
}

bool isNodeName(QStringView name)
{
    return !name.isEmpty() && !Common::TextClass::isDigit(name.front()) &&
           std::all_of(name.begin(), name.end(), Common::TextClass::isWord);
}

QStringView nextWord(QStringView text, qsizetype &position)
{
    TextCursor cursor(text, position);
    cursor.takeBlanks();
    const QStringView word = cursor.takeWhile(isNoBlank);
    position = cursor.position();
    return word;
}

std::optional<std::array<QStringView, 2>> twoWords(QStringView text)
{
    TextCursor cursor(text);
    const QStringView first = cursor.takeWhile(isNoBlank);
    const bool isSplit = !cursor.takeBlanks().isEmpty();
    const QStringView second = cursor.takeWhile(isNoBlank);
    return isSplit && cursor.atEnd() ? std::optional(std::array{first, second}) : std::nullopt;
}

QStringList splitReceivers(QStringView text)
{
    QStringList receivers;
    TextCursor cursor(text);
    for (cursor.takeWhile(isSeparator); !cursor.atEnd(); cursor.takeWhile(isSeparator))
        receivers.append(cursor.takeWhile([](QChar character) { return !isSeparator(character); }).toString());
    return receivers;
}

QStringList splitEnumValues(QStringView text)
{
    if (text.startsWith(u'"'))
        text = text.mid(1);
    if (text.endsWith(u'"'))
        text.chop(1);
    QStringList values;
    qsizetype begin = 0;
    TextCursor cursor(text);
    QStringView skipped;
    while (cursor.takeUpTo(u'"', skipped)) {
        const qsizetype behindQuote = cursor.position();
        if (takeEnumSeparator(cursor)) {
            values.append(text.mid(begin, behindQuote - 1 - begin).toString());
            begin = cursor.position();
        } else {
            cursor.setPosition(behindQuote);
        }
    }
    values.append(text.mid(begin).toString());
    return values;
}

} // namespace DbcScan
