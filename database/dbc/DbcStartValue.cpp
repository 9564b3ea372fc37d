// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcStartValue.h"

#include "common/Log.h"
#include "database/dbc/DbcRawRange.h"
#include "database/dbc/DbcSignal.h"
#include "database/text/LogText.h"
#include "database/text/Numbers.h"

#include <cmath>
#include <optional>

using Common::LogText;

namespace DbcStartValue {

namespace {

constexpr unsigned wordBits = 64;

// Nothing for a number beyond 64 bits.
std::optional<std::int64_t> truncated(double number)
{
    constexpr double limit = 9223372036854775808.0; // 2^63
    if (number < -limit || number >= limit)
        return std::nullopt;
    return static_cast<std::int64_t>(number);
}

std::uint64_t inBits(std::int64_t value, unsigned size)
{
    const auto bits = static_cast<std::uint64_t>(value);
    return size == 0 || size >= wordBits ? bits : bits & ((std::uint64_t{1} << size) - 1);
}

} // namespace

void apply(QStringView text, DbcSignal &signal)
{
    const auto number = Common::Numbers::readDouble(text);
    if (!number) {
        Common::logWarning("Signal {} start value is not a valid number: {}", LogText(signal.name), LogText(text));
        return;
    }
    const DbcRawRange range = rawRangeOf(signal);
    const auto value = truncated(*number);
    if (value && *value >= range.smallest && *value <= range.largest) {
        signal.value = inBits(*value, signal.size);
        return;
    }
    const QString shown = value ? QString::number(*value) : text.toString();
    Common::logWarning("Signal {} start value {} exceeds valid range for bit width {} (allowed: {} ~ {})",
                       LogText(signal.name), LogText(shown), signal.size, range.smallest, range.largest);
}

} // namespace DbcStartValue
