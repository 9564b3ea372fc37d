// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcScan.h"
#include "database/text/TextCursor.h"

using Common::TextCursor;

namespace DbcScan {

namespace {

void skipToDigits(TextCursor &cursor)
{
    cursor.takeWhile([](QChar character) { return !Common::TextClass::isDigit(character); });
}

// `([\w\d_]+)\s+(.*);$` behind at least one blank.
bool takeNameAndPairs(TextCursor &cursor, ValueDescription &description)
{
    if (cursor.takeBlanks().isEmpty() || (description.name = cursor.takeWord()).isEmpty())
        return false;
    if (cursor.takeBlanks().isEmpty() || cursor.atEnd()) // the closing semicolon is left
        return false;
    description.pairs = cursor.rest().chopped(1);
    return true;
}

} // namespace

std::optional<ValuePair> findValuePair(QStringView text, qsizetype from)
{
    TextCursor cursor(text, from);
    for (skipToDigits(cursor); !cursor.atEnd(); skipToDigits(cursor)) {
        ValuePair pair;
        pair.key = cursor.takeDigits();
        if (cursor.takeBlanks().isEmpty() || !cursor.take(u'"'))
            continue;
        if (!cursor.takeUpTo(u'"', pair.text))
            return std::nullopt; // no quote is left
        pair.end = cursor.position();
        return pair;
    }
    return std::nullopt;
}

std::optional<ValueDescription> readValueDescription(QStringView statement)
{
    TextCursor cursor(statement);
    ValueDescription description;
    if (!statement.endsWith(u';') || !cursor.take(u"VAL_"))
        return std::nullopt;
    const qsizetype behindKeyword = cursor.position();
    cursor.takeBlanks();
    description.number = cursor.takeDigits();
    if (!description.number.isEmpty() && takeNameAndPairs(cursor, description))
        return description;
    // Without a message number; a lone number may be a table's name.
    description.number = {};
    cursor.setPosition(behindKeyword);
    if (takeNameAndPairs(cursor, description))
        return description;
    return std::nullopt;
}

std::optional<NumberRange> findNumberRange(QStringView text, qsizetype from)
{
    TextCursor cursor(text, from);
    for (skipToDigits(cursor); !cursor.atEnd(); skipToDigits(cursor)) {
        NumberRange range;
        range.first = cursor.takeDigits();
        if (!cursor.take(u'-') || (range.last = cursor.takeDigits()).isEmpty())
            continue;
        range.end = cursor.position();
        return range;
    }
    return std::nullopt;
}

} // namespace DbcScan
