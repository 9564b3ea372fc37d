// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/text/TextCursor.h"

#include <QStringView>

namespace Common {

/// A cursor that knows the elements of description files. The take functions here tell whether there was something to
/// take; where there was not, the cursor stands where it stood, or, if the comment says so, inside what was tried. The
/// text must outlive the scanner.
class LdfScanner : public TextCursor
{
public:
    using TextCursor::TextCursor;

    /// Goes to the next whole word, wherever it stands, and takes it. At the end of the text when there is none.
    bool findWord(QStringView &word);
    bool takeWord(QStringView &word);
    /// Returns how many blanks were skipped.
    qsizetype skipBlanks() { return takeBlanks().size(); }
    /// The character with blanks around it. May stop behind blanks.
    bool takeMark(char16_t character);

    /// Digits alone.
    bool takeDigits(QStringView &digits);
    /// 0x and hexadecimal digits, or digits alone.
    bool takeHexOrDigits(QStringView &number);
    /// Digits, and behind a point more of them if there are.
    bool takeDecimal(QStringView &number);
    /// A number with sign, fraction and exponent, each of which may be missing; so may the digits before the point.
    /// May stop behind the sign.
    bool takeReal(QStringView &number);
    /// Words, blanks and commas as far as they go. Blanks in front are left out while something else follows.
    bool takeList(QStringView &list);
    /// "{...}" up to the first closing brace; inside there must be something.
    bool takeBraced(QStringView &inside);
    /// "..." up to the next quote; may be empty.
    bool takeQuoted(QStringView &inside);
    /// All up to the next such character, which stays; at least one character.
    bool takeUntil(char16_t character, QStringView &before);
    /// All that is left.
    QStringView takeRest();
};

} // namespace Common
