// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/text/Numbers.h"

#include <QStringView>

#include <algorithm>
#include <optional>

namespace Common {

/// The base of a whole number without a sign, as the C language tells it: by "0x" or a leading 0.
inline int ldfCBase(QStringView number)
{
    if (number.size() < 2 || number[0] != u'0')
        return 10;
    return number[1] == u'x' || number[1] == u'X' ? 16 : 8;
}

/// Whether a number, as the statements' patterns find it (0x1F, 037 or 31), is one at all, however large: behind a
/// leading 0 there may be digits that no octal number has.
inline bool isLdfCNumber(QStringView number)
{
    const auto isOctal = [](QChar digit) { return digit.unicode() < u'8'; };
    return ldfCBase(number) != 8 || std::all_of(number.begin(), number.end(), isOctal);
}

/// A whole number as the C language writes it: 0x1F, 037 and 31 are the same. Nothing where it is none or beyond the
/// type.
template <typename Integer> std::optional<Integer> readLdfCInteger(QStringView text)
{
    const bool hasSign = text.startsWith(u'+') || text.startsWith(u'-');
    return Numbers::readInteger<Integer>(text, ldfCBase(hasSign ? text.mid(1) : text));
}

/// The same, 0 where there is none.
template <typename Integer> Integer ldfCIntegerOrZero(QStringView text)
{
    return readLdfCInteger<Integer>(text).value_or(Integer{0});
}

} // namespace Common
