// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/text/Numbers.h"

#include <QStringView>

#include <optional>

namespace Common {

/// A whole number as the C language writes it: 0x1F, 037 and 31 are the same. Nothing where it is none or beyond the
/// type.
template <typename Integer> std::optional<Integer> readLdfCInteger(QStringView text)
{
    const bool hasSign = text.startsWith(u'+') || text.startsWith(u'-');
    const QStringView digits = hasSign ? text.mid(1) : text;
    const bool isOctal = digits.size() > 1 && digits[0] == u'0';
    const bool isHex = isOctal && (digits[1] == u'x' || digits[1] == u'X');
    return Numbers::readInteger<Integer>(text, isHex ? 16 : isOctal ? 8 : 10);
}

/// The same, 0 where there is none.
template <typename Integer> Integer ldfCIntegerOrZero(QStringView text)
{
    return readLdfCInteger<Integer>(text).value_or(Integer{0});
}

} // namespace Common
