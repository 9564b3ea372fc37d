// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfStatements.h"

#include "database/ldf/LdfScanner.h"

#include <algorithm>

namespace Common {
namespace {

// Most patterns begin with a word and go on with something that is no part of one. So only whole words need be tried:
// a match from inside a word ends where that from its beginning does. A tail that fails may tell by resumeAt that all
// words up to a later place fail too; that is what keeps hostile texts linear.
template <typename Tail> LdfMatch firstFromWord(QStringView text, qsizetype from, Tail tail)
{
    LdfScanner scanner(text, from);
    LdfMatch match;
    while (scanner.findWord(match[1])) {
        std::fill(match.captures.begin() + 2, match.captures.end(), QStringView());
        qsizetype resumeAt = scanner.position();
        if (tail(scanner, match, resumeAt)) {
            match.end = scanner.position();
            return match;
        }
        scanner.setPosition(resumeAt);
    }
    return {};
}

template <typename Tail> LdfMatch firstFromLiteral(QStringView text, QStringView literal, Tail tail)
{
    LdfMatch match;
    for (qsizetype start = findLiteral(text, literal, 0); start >= 0;) {
        LdfScanner scanner(text, start + literal.size());
        qsizetype resumeAt = scanner.position();
        if (tail(scanner, match, resumeAt)) {
            match.end = scanner.position();
            return match;
        }
        start = findLiteral(text, literal, resumeAt);
    }
    return {};
}

// Takes "{...}"; where there is no closing brace no later word finds one either.
bool takeBraced(LdfScanner &scanner, QStringView text, QStringView &inside, qsizetype &resumeAt)
{
    if (scanner.takeBraced(inside))
        return true;
    if (scanner.isAt(u'{') && text.indexOf(u'}', scanner.position()) < 0)
        resumeAt = text.size();
    return false;
}

bool takeDelay(LdfScanner &scanner, QStringView &number)
{
    if (!scanner.take(u"delay") || scanner.skipBlanks() == 0 || !scanner.takeDecimal(number))
        return false;
    scanner.skipBlanks();
    return scanner.take(u"ms");
}

// "; // comment" behind a signal; leaves the scanner where it is when there is none.
void takeLineComment(LdfScanner &scanner, QStringView &comment)
{
    const qsizetype start = scanner.position();
    scanner.skipBlanks();
    scanner.take(u';');
    scanner.skipBlanks();
    if (scanner.take(u"//")) {
        const qsizetype blanks = scanner.skipBlanks();
        if (scanner.atEnd() && blanks > 0) // a comment of blanks is the last of them
            scanner.setPosition(scanner.position() - 1);
        if (!scanner.atEnd()) {
            comment = scanner.takeRest();
            return;
        }
    }
    scanner.setPosition(start);
}

QStringView withoutBlanksBehind(QStringView text)
{
    while (text.size() > 1 && TextClass::isBlank(text.back()))
        text.chop(1);
    return text;
}

LdfMatch matchNameList(QStringView text, QStringView key, char16_t mark)
{
    return firstFromLiteral(text, key, [mark](LdfScanner &scanner, LdfMatch &match, qsizetype &) {
        scanner.skipBlanks();
        return scanner.take(mark) && scanner.takeList(match[1]) && scanner.take(u';');
    });
}

bool takeRawBound(LdfScanner &scanner, QStringView &number)
{
    const qsizetype start = scanner.position();
    if (scanner.takeHexOrDigits(number) && number.startsWith(u"0x"))
        return true;
    scanner.setPosition(start);
    return scanner.takeReal(number);
}

} // namespace

LdfMatch matchLdfBlockStart(QStringView text, qsizetype from)
{
    return firstFromWord(text, from, [](LdfScanner &scanner, LdfMatch &, qsizetype &) {
        scanner.skipBlanks();
        return scanner.take(u'{');
    });
}

LdfMatch matchLdfNodeProtocol(QStringView text)
{
    static constexpr QStringView key = u"LIN_protocol";
    const auto isValueCharacter = [](QChar character) {
        return character != u';' && character != u'"' && !TextClass::isBlank(character);
    };
    return firstFromLiteral(text, key, [&](LdfScanner &scanner, LdfMatch &match, qsizetype &resumeAt) {
        if (!scanner.takeMark(u'='))
            return false;
        scanner.take(u'"');
        match[1] = scanner.takeWhile(isValueCharacter);
        // Every value that begins inside this one ends as this one does; only a key at its very end has another.
        resumeAt = qMax(resumeAt, scanner.position() - key.size() - 1);
        scanner.take(u'"');
        scanner.skipBlanks();
        return !match[1].isEmpty() && scanner.take(u';');
    });
}

LdfMatch matchLdfSlaves(QStringView text)
{
    return matchNameList(text, u"Slaves", u':');
}

LdfMatch matchLdfFaultStateSignals(QStringView text)
{
    return matchNameList(text, u"fault_state_signals", u'=');
}

LdfMatch matchLdfConfigurableFrame(QStringView text, qsizetype from)
{
    return firstFromWord(text, from, [](LdfScanner &scanner, LdfMatch &, qsizetype &) {
        scanner.skipBlanks();
        QStringView number;
        if (scanner.take(u'=')) {
            scanner.skipBlanks();
            if (!scanner.takeHexOrDigits(number))
                return false;
            scanner.skipBlanks();
        }
        return scanner.take(u';');
    });
}

LdfMatch matchLdfPhysicalValue(QStringView text)
{
    return firstFromLiteral(text, u"physical_value", [](LdfScanner &scanner, LdfMatch &match, qsizetype &) {
        if (!scanner.takeMark(u',') || !takeRawBound(scanner, match[1]) || !scanner.takeMark(u',') ||
            !takeRawBound(scanner, match[2]) || !scanner.takeMark(u',') || !scanner.takeReal(match[3]) ||
            !scanner.takeMark(u',') || !scanner.takeReal(match[4]))
            return false;
        scanner.skipBlanks();
        const qsizetype withoutUnit = scanner.position();
        if (!scanner.takeMark(u',') || !scanner.takeQuoted(match[5]))
            scanner.setPosition(withoutUnit);
        return true;
    });
}

LdfMatch matchLdfLogicalValue(QStringView text)
{
    return firstFromLiteral(text, u"logical_value", [](LdfScanner &scanner, LdfMatch &match, qsizetype &) {
        return scanner.takeMark(u',') && scanner.takeHexOrDigits(match[1]) && scanner.takeMark(u',') &&
               scanner.takeQuoted(match[2]);
    });
}

LdfMatch matchLdfArraySignal(QStringView line)
{
    return firstFromWord(line, 0, [line](LdfScanner &scanner, LdfMatch &match, qsizetype &resumeAt) {
        if (!scanner.takeMark(u':') || !scanner.takeDigits(match[2]) || !scanner.takeMark(u',') ||
            !takeBraced(scanner, line, match[3], resumeAt))
            return false;
        resumeAt = scanner.position(); // an opening brace before here meets the same closing one
        if (!scanner.takeMark(u',') || !scanner.takeWord(match[4]))
            return false;
        scanner.skipBlanks();
        if (!scanner.take(u',') || !scanner.takeList(match[5]))
            return false;
        takeLineComment(scanner, match[6]);
        return true;
    });
}

LdfMatch matchLdfScalarSignal(QStringView line)
{
    return firstFromWord(line, 0, [line](LdfScanner &scanner, LdfMatch &match, qsizetype &resumeAt) {
        if (!scanner.takeMark(u':') || !scanner.takeDigits(match[2]))
            return false;
        scanner.skipBlanks();
        if (!scanner.take(u','))
            return false;
        const qsizetype blanks = scanner.skipBlanks();
        if (blanks > 0 && scanner.isAt(u',')) // a value of blanks is the last of them
            scanner.setPosition(scanner.position() - 1);
        if (!scanner.takeUntil(u',', match[3])) {
            if (line.indexOf(u',', scanner.position()) < 0)
                resumeAt = line.size();
            return false;
        }
        match[3] = withoutBlanksBehind(match[3]);
        if (!scanner.takeMark(u',') || !scanner.takeWord(match[4]))
            return false;
        scanner.skipBlanks();
        if (!scanner.take(u',') || !scanner.takeList(match[5]))
            return false;
        match[5] = withoutBlanksBehind(match[5]);
        takeLineComment(scanner, match[6]);
        scanner.skipBlanks();
        scanner.take(u';');
        scanner.skipBlanks();
        return scanner.atEnd();
    });
}

LdfMatch matchLdfDiagnosticSignal(QStringView text)
{
    return firstFromWord(text, 0, [text](LdfScanner &scanner, LdfMatch &match, qsizetype &resumeAt) {
        if (!scanner.takeMark(u':') || !scanner.takeDigits(match[2]) || !scanner.takeMark(u','))
            return false;
        if (scanner.takeDigits(match[3]))
            return true;
        const qsizetype brace = scanner.position();
        if (!takeBraced(scanner, text, match[3], resumeAt))
            return false;
        match[3] = text.mid(brace, scanner.position() - brace);
        return true;
    });
}

LdfMatch matchLdfNamedList(QStringView text)
{
    return firstFromWord(text, 0, [](LdfScanner &scanner, LdfMatch &match, qsizetype &) {
        scanner.skipBlanks();
        return scanner.take(u':') && scanner.takeList(match[2]);
    });
}

LdfMatch matchLdfFrame(QStringView text)
{
    return firstFromWord(text, 0, [text](LdfScanner &scanner, LdfMatch &match, qsizetype &resumeAt) {
        if (!scanner.takeMark(u':') || !scanner.takeHexOrDigits(match[2]) || !scanner.takeMark(u',') ||
            !scanner.takeWord(match[3]) || !scanner.takeMark(u',') || !scanner.takeDigits(match[4]))
            return false;
        scanner.skipBlanks();
        return takeBraced(scanner, text, match[5], resumeAt);
    });
}

LdfMatch matchLdfPlacement(QStringView text)
{
    return firstFromWord(text, 0, [](LdfScanner &scanner, LdfMatch &match, qsizetype &) {
        return scanner.takeMark(u',') && scanner.takeDigits(match[2]);
    });
}

LdfMatch matchLdfDiagnosticFrame(QStringView text, qsizetype from)
{
    return firstFromWord(text, from, [text](LdfScanner &scanner, LdfMatch &match, qsizetype &resumeAt) {
        if (!scanner.takeMark(u':') || !scanner.takeHexOrDigits(match[2]))
            return false;
        scanner.skipBlanks();
        return takeBraced(scanner, text, match[3], resumeAt);
    });
}

LdfMatch matchLdfEventTriggeredFrame(QStringView text)
{
    return firstFromWord(text, 0, [](LdfScanner &scanner, LdfMatch &match, qsizetype &) {
        if (!scanner.takeMark(u':') || !scanner.takeWord(match[2]) || !scanner.takeMark(u',') ||
            !scanner.takeHexOrDigits(match[3]))
            return false;
        scanner.skipBlanks();
        return scanner.take(u',') && scanner.takeList(match[4]);
    });
}

LdfMatch matchLdfFrameSlot(QStringView text)
{
    return firstFromWord(text, 0, [](LdfScanner &scanner, LdfMatch &match, qsizetype &) {
        return scanner.skipBlanks() > 0 && takeDelay(scanner, match[2]);
    });
}

LdfMatch matchLdfCommandSlot(QStringView text)
{
    return firstFromWord(text, 0, [text](LdfScanner &scanner, LdfMatch &match, qsizetype &resumeAt) {
        scanner.skipBlanks();
        if (!takeBraced(scanner, text, match[2], resumeAt))
            return false;
        resumeAt = scanner.position(); // an opening brace before here meets the same closing one
        scanner.skipBlanks();
        return takeDelay(scanner, match[3]);
    });
}

} // namespace Common
