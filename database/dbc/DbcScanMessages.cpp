// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcScan.h"
#include "database/text/TextCursor.h"

using Common::TextCursor;

namespace DbcScan {

namespace {

constexpr QStringView messageKeyword = u"BO_";

std::optional<MessageHead> readMessageHead(TextCursor cursor) // behind the keyword
{
    MessageHead head;
    if (cursor.takeBlanks().isEmpty() || (head.number = cursor.takeDigits()).isEmpty())
        return std::nullopt;
    if (cursor.takeBlanks().isEmpty() || (head.name = cursor.takeWord()).isEmpty() || !cursor.take(u':'))
        return std::nullopt;
    if (cursor.takeBlanks().isEmpty() || (head.size = cursor.takeDigits()).isEmpty())
        return std::nullopt;
    if (cursor.takeBlanks().isEmpty() || (head.transmitter = cursor.takeWord()).isEmpty())
        return std::nullopt;
    head.end = cursor.position();
    return head;
}

bool takeLayout(TextCursor &cursor, SignalBody &body)
{
    body.startBit = cursor.takeDigits();
    if (body.startBit.isEmpty() || !cursor.take(u'|'))
        return false;
    body.size = cursor.takeDigits();
    if (body.size.isEmpty() || !cursor.take(u'@'))
        return false;
    body.isBigEndian = cursor.take(u'0');
    if (!body.isBigEndian && !cursor.take(u'1'))
        return false;
    body.isSigned = cursor.take(u'-');
    return body.isSigned || cursor.take(u'+');
}

// A quoted text with its quotes; where the quote is never closed, or there is none, what stands before the next blank.
QStringView takeUnit(TextCursor &cursor)
{
    const qsizetype begin = cursor.position();
    QStringView quoted;
    if (cursor.take(u'"') && cursor.takeUpTo(u'"', quoted))
        return cursor.since(begin);
    cursor.setPosition(begin);
    return cursor.takeWhile([](QChar character) { return !Common::TextClass::isBlank(character); });
}

} // namespace

std::optional<MessageHead> findMessageHead(QStringView text, qsizetype from)
{
    for (qsizetype found = Common::findLiteral(text, messageKeyword, from); found >= 0;
         found = Common::findLiteral(text, messageKeyword, found + messageKeyword.size())) {
        if (auto head = readMessageHead(TextCursor(text, found + messageKeyword.size())))
            return head;
    }
    return std::nullopt;
}

std::optional<SignalBody> readSignalBody(QStringView line)
{
    TextCursor cursor(line);
    SignalBody body;
    cursor.takeBlanks();
    if (!takeLayout(cursor, body))
        return std::nullopt;
    cursor.takeBlanks();
    if (!cursor.take(u'(') || !cursor.takeUpTo(u')', body.scaling))
        return std::nullopt;
    cursor.takeBlanks();
    if (!cursor.take(u'[') || !cursor.takeUpTo(u']', body.range))
        return std::nullopt;
    cursor.takeBlanks();
    body.unit = takeUnit(cursor);
    cursor.takeBlanks();
    body.receivers = cursor.rest();
    return body;
}

} // namespace DbcScan
