// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfScanner.h"

namespace Common {
namespace {

bool isHexDigit(QChar character)
{
    const char16_t code = character.unicode();
    return TextClass::isDigit(character) || (code >= u'a' && code <= u'f') || (code >= u'A' && code <= u'F');
}

bool isListCharacter(QChar character)
{
    return character == u',' || TextClass::isWord(character) || TextClass::isBlank(character);
}

} // namespace

bool LdfScanner::findWord(QStringView &word)
{
    takeWhile([](QChar character) { return !TextClass::isWord(character); });
    return takeWord(word);
}

bool LdfScanner::takeWord(QStringView &word)
{
    word = TextCursor::takeWord();
    return !word.isEmpty();
}

bool LdfScanner::takeMark(char16_t character)
{
    skipBlanks();
    if (!take(character))
        return false;
    skipBlanks();
    return true;
}

bool LdfScanner::takeDigits(QStringView &digits)
{
    digits = TextCursor::takeDigits();
    return !digits.isEmpty();
}

bool LdfScanner::takeHexOrDigits(QStringView &number)
{
    const qsizetype start = position();
    if (take(u"0x") && !takeWhile(isHexDigit).isEmpty()) {
        number = since(start);
        return true;
    }
    setPosition(start);
    return takeDigits(number);
}

bool LdfScanner::takeDecimal(QStringView &number)
{
    const qsizetype start = position();
    if (!takeDigits(number))
        return false;
    const qsizetype point = position();
    if (!take(u'.') || TextCursor::takeDigits().isEmpty())
        setPosition(point);
    number = since(start);
    return true;
}

bool LdfScanner::takeReal(QStringView &number)
{
    const auto takeSign = [this] { return take(u'-') || take(u'+'); };
    const qsizetype start = position();
    takeSign();
    const bool hasWhole = !TextCursor::takeDigits().isEmpty();
    const qsizetype point = position();
    if (!take(u'.') || TextCursor::takeDigits().isEmpty()) {
        setPosition(point);
        if (!hasWhole)
            return false;
    }
    const qsizetype exponent = position();
    if (take(u'e') || take(u'E')) {
        takeSign();
        if (TextCursor::takeDigits().isEmpty())
            setPosition(exponent);
    }
    number = since(start);
    return true;
}

bool LdfScanner::takeList(QStringView &list)
{
    const QStringView run = takeWhile(isListCharacter);
    if (run.isEmpty())
        return false;
    qsizetype blanks = 0;
    while (blanks + 1 < run.size() && TextClass::isBlank(run[blanks])) // of blanks alone the last one is the list
        ++blanks;
    list = run.mid(blanks);
    return true;
}

bool LdfScanner::takeBraced(QStringView &inside)
{
    const qsizetype start = position();
    if (take(u'{') && takeUntil(u'}', inside) && take(u'}'))
        return true;
    setPosition(start);
    return false;
}

bool LdfScanner::takeQuoted(QStringView &inside)
{
    const qsizetype start = position();
    if (take(u'"') && takeUpTo(u'"', inside))
        return true;
    setPosition(start);
    return false;
}

bool LdfScanner::takeUntil(char16_t character, QStringView &before)
{
    const qsizetype length = rest().indexOf(QChar(character));
    if (length <= 0)
        return false;
    before = rest().left(length);
    setPosition(position() + length);
    return true;
}

QStringView LdfScanner::takeRest()
{
    const QStringView left = rest();
    setPosition(position() + left.size());
    return left;
}

} // namespace Common
