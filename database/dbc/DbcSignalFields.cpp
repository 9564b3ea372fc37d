// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcSignalFields.h"

#include "database/dbc/DbcRawRange.h"
#include "database/dbc/DbcSharedTexts.h"
#include "database/dbc/DbcSignal.h"
#include "database/text/Numbers.h"
#include "database/text/QuotedText.h"

#include <array>
#include <functional>
#include <optional>

using Common::Numbers::doubleOrZero;
using Common::Numbers::integerOrZero;

namespace DbcSignalFields {

namespace {

using Pair = std::array<QStringView, 2>;

// The parts between separators when exactly two of them are not empty.
std::optional<Pair> twoParts(QStringView text, char16_t separator)
{
    Pair parts;
    std::size_t count = 0;
    while (!text.isEmpty()) {
        const qsizetype found = text.indexOf(QChar(separator));
        const QStringView part = found < 0 ? text : text.left(found);
        text = found < 0 ? QStringView() : text.mid(found + 1);
        if (part.isEmpty())
            continue;
        if (count == parts.size())
            return std::nullopt;
        parts[count++] = part;
    }
    return count == parts.size() ? std::optional(parts) : std::nullopt;
}

// What the raw value can be, scaled.
void deriveRange(DbcSignal &signal)
{
    const DbcRawRange raw = rawRangeOf(signal);
    signal.maximum = static_cast<double>(raw.largest) * signal.factor + signal.offset;
    signal.minimum =
        signal.isSigned ? static_cast<double>(raw.smallest) * signal.factor + signal.offset : signal.offset;
}

void applyRange(const std::optional<Pair> &range, DbcSignal &signal)
{
    if (range) {
        signal.minimum = doubleOrZero((*range)[0]);
        signal.maximum = doubleOrZero((*range)[1]);
    }
    if (signal.minimum == 0.0 && signal.maximum == 0.0) // none, or "[0|0]"
        deriveRange(signal);
}

bool hasExponent(QStringView number)
{
    return number.contains(u'E', Qt::CaseInsensitive);
}

// The range of a float is written with an exponent; nothing else in the line tells. SIG_VALTYPE_, which would, comes
// too late in the file and leaves the type alone.
void detectFloat(const std::optional<Pair> &range, DbcSignal &signal)
{
    const bool isPlain = signal.factor == 1.0 && signal.offset == 0.0;
    if (!isPlain || !range || !(hasExponent((*range)[0]) || hasExponent((*range)[1])))
        return;
    if (signal.size == 32)
        signal.valueType = DbcValueType::float32;
    else if (signal.size == 64)
        signal.valueType = DbcValueType::float64;
}

} // namespace

void apply(const DbcScan::SignalBody &body, DbcSharedTexts &texts, DbcSignal &signal)
{
    signal.startBit = integerOrZero<std::uint16_t>(body.startBit);
    signal.size = integerOrZero<std::uint16_t>(body.size);
    signal.isBigEndian = body.isBigEndian;
    signal.isSigned = body.isSigned;
    if (const auto scaling = twoParts(body.scaling, u',')) {
        signal.factor = doubleOrZero((*scaling)[0]);
        signal.offset = doubleOrZero((*scaling)[1]);
    }
    const auto range = twoParts(body.range, u'|');
    applyRange(range, signal);
    detectFloat(range, signal);
    signal.unit = texts.units.valueOf(Common::withoutQuotes(body.unit), std::identity());
    signal.receivers = texts.receivers.valueOf(body.receivers, DbcScan::splitReceivers);
}

} // namespace DbcSignalFields
