// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/database/corpus/DbcFrameCheck.h"

#include "database/dbc/DbcConversions.h"
#include "tests/database/corpus/RuleBook.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace tzcorpus {

namespace {

constexpr double relativeTolerance = 1e-9;

std::size_t independentBit(std::size_t start, std::size_t step, bool isBigEndian)
{
    if (!isBigEndian)
        return start + step;
    const std::size_t fromTop = (start / 8) * 8 + (7 - start % 8) + step; // bits counted from the top of byte 0
    return (fromTop / 8) * 8 + (7 - fromTop % 8);
}

/// The bits that signals cover, as bytes; empty where a signal reaches past the end.
QByteArray coveredBits(const DbcMessage &message)
{
    QByteArray mask(message.size, '\0');
    for (const DbcSignal &signal : message.signals) {
        for (std::size_t step = 0; step < signal.size; ++step) {
            const std::size_t bit = independentBit(signal.startBit, step, signal.isBigEndian);
            if (bit / 8 >= message.size)
                return {};
            mask[static_cast<int>(bit / 8)] = static_cast<char>(mask[static_cast<int>(bit / 8)] | (1 << (bit % 8)));
        }
    }
    return mask;
}

/// The value that a raw value stands for by the signal's own fields, worked out apart from the program.
double physicalOf(std::uint64_t raw, const DbcSignal &signal)
{
    if (signal.valueType == 1) {
        const auto bits = static_cast<std::uint32_t>(raw);
        float number = 0;
        std::memcpy(&number, &bits, sizeof number);
        return number;
    }
    double number = static_cast<double>(raw);
    if (signal.valueType == 2)
        std::memcpy(&number, &raw, sizeof number);
    else if (signal.isSigned && (raw >> (signal.size - 1U)) != 0)
        number = static_cast<double>(static_cast<std::int64_t>(raw << (64U - signal.size)) >> (64U - signal.size));
    return signal.valueType == 2 ? number : number * signal.factor + signal.offset;
}

bool isNear(double expected, double actual)
{
    if (!std::isfinite(expected) || !std::isfinite(actual))
        return (std::isnan(expected) && std::isnan(actual)) || expected == actual;
    return std::abs(expected - actual) <= relativeTolerance * std::max(std::abs(expected), std::abs(actual));
}

} // namespace

void DbcFrameCheck::addRules()
{
    RuleBook::instance().add("decoded otherwise", "whether a signal is a float, and its scale, are as the rules of the "
                                                  "fields say, and so is its value");
    RuleBook::instance().add("not encoded", "a message with a signal past its end encodes to nothing");
}

DbcFrameCheck::DbcFrameCheck(const ExpectedMessage &expected, DbcMessage message)
    : m_expected(expected)
    , m_message(std::move(message))
    , m_mask(coveredBits(m_message))
{
}

QStringList DbcFrameCheck::check(const GoldenFrame &frame, DbcTotals &totals)
{
    m_differences.clear();
    const auto *bytes = reinterpret_cast<const std::uint8_t *>(frame.data.constData());
    if (decodeMessage(bytes, static_cast<std::size_t>(frame.data.size()), m_message) != 0) {
        differ(frame, QStringLiteral("not decoded"));
        return m_differences;
    }
    for (const DbcSignal &signal : m_message.signals)
        totals.values += checkSignal(frame, signal) ? 1 : 0;
    checkEncoded(frame, totals);
    ++totals.frames;
    return m_differences;
}

const GoldenSignal *DbcFrameCheck::goldenSignal(const DbcSignal &signal) const
{
    for (const GoldenSignal &golden : m_expected.golden->signals) {
        if (golden.shortName == signal.name)
            return &golden;
    }
    return nullptr;
}

bool DbcFrameCheck::checkSignal(const GoldenFrame &frame, const DbcSignal &signal)
{
    const GoldenSignal *golden = goldenSignal(signal);
    const auto value = golden != nullptr ? frame.values.find(golden->name) : frame.values.end();
    if (value == frame.values.end()) {
        if (golden == nullptr || golden->fits)
            differ(frame, signal.name + QStringLiteral(": the results do not tell of it"));
        return false; // outside the payload
    }
    const std::uint64_t raw = value->second.raw;
    if (raw != signal.value)
        differ(frame, QStringLiteral("%1: raw %2, is %3").arg(signal.name).arg(raw).arg(signal.value));
    const bool isSameKind =
        (signal.valueType != 0) == golden->isFloat && signal.factor == golden->scale && signal.offset == golden->offset;
    RuleBook::instance().count("decoded otherwise", isSameKind ? 0 : 1);
    const double physical = isSameKind ? value->second.physical : physicalOf(raw, signal);
    if (!isNear(physical, getSignalPhysicalValue(signal)))
        differ(frame, QStringLiteral("%1: physical %2, is %3")
                          .arg(signal.name)
                          .arg(physical, 0, 'g', 17)
                          .arg(getSignalPhysicalValue(signal), 0, 'g', 17));
    checkWayBack(frame, signal);
    return true;
}

// Up to 32 bits, and with an offset that leaves them in a double, the physical value gives the raw value again.
void DbcFrameCheck::checkWayBack(const GoldenFrame &frame, const DbcSignal &signal)
{
    const bool isExact = signal.valueType == 0 && signal.size <= 32 && signal.factor != 0.0 &&
                         std::abs(signal.offset) < 1e5 * std::abs(signal.factor);
    if (isExact && physicalToRawValue(getSignalPhysicalValue(signal), signal) != signal.value)
        differ(frame, signal.name + QStringLiteral(": the physical value does not give the raw value again"));
}

void DbcFrameCheck::checkEncoded(const GoldenFrame &frame, DbcTotals &totals)
{
    const QByteArray encoded = encodeMessage(m_message);
    const bool isWithin = m_message.size == 0 || !m_mask.isEmpty();
    RuleBook::instance().count("not encoded", isWithin ? 0 : 1);
    QByteArray expected = isWithin ? frame.data.left(m_message.size) : QByteArray();
    for (int at = 0; at < expected.size(); ++at)
        expected[at] = static_cast<char>(expected.at(at) & m_mask.at(at));
    if (encoded != expected)
        differ(frame, QStringLiteral("encoded to %1 instead of %2")
                          .arg(QString::fromLatin1(encoded.toHex()), QString::fromLatin1(expected.toHex())));
    ++totals.encoded;
}

void DbcFrameCheck::differ(const GoldenFrame &frame, const QString &what)
{
    m_differences += QStringLiteral("%1 [%2] %3").arg(m_message.name, QString::fromLatin1(frame.data.toHex()), what);
}

} // namespace tzcorpus
