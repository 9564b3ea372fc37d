// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/database/corpus/DbcSignalRules.h"

#include "tests/database/corpus/RuleBook.h"

#include <QRegularExpression>

#include <algorithm>
#include <limits>

namespace tzcorpus {

namespace {

struct SignalRule
{
    const char *name;
    const char *reason;
    bool (*apply)(SignalCase &signal);
};

bool hasAsciiName(const SignalCase &signal)
{
    TextMessage message;
    message.name = signal.text->name;
    return message.hasAsciiName();
}

bool shortName(SignalCase &signal)
{
    const bool differs = signal.expected.name != signal.text->name;
    signal.expected.name = signal.text->name;
    return differs;
}

bool derivedRange(SignalCase &signal)
{
    const bool isZero = signal.expected.minimum == 0.0 && signal.expected.maximum == 0.0;
    if (isZero)
        deriveRange(signal.expected);
    return isZero;
}

bool lostByLimits(SignalCase &signal)
{
    signal.isLost = signal.expected.minimum > signal.expected.maximum;
    return signal.isLost;
}

bool lostByPlace(SignalCase &signal)
{
    const bool mayBeLarge = signal.expected.name.startsWith(QLatin1String("ExtendedVersion"));
    const bool isLost =
        (!mayBeLarge && (signal.expected.size == 0 || signal.expected.size > 64)) || signal.expected.startBit > 511;
    signal.isLost = signal.isLost || isLost;
    return isLost;
}

bool lostByCut(SignalCase &signal)
{
    signal.isLost = signal.isLost || signal.text->isCut;
    return signal.text->isCut;
}

bool floatByRange(SignalCase &signal)
{
    const std::uint8_t kind = floatKindByRange(signal.expected, signal.text->range);
    const bool differs = kind != signal.expected.valueType;
    signal.expected.valueType = kind;
    return differs;
}

bool declaredFloat(SignalCase &signal)
{
    const int type = hasAsciiName(signal) ? signal.text->valueType.value_or(0) : 0;
    if (type != 1 && type != 2)
        return false;
    signal.expected.factor = 1.0;
    signal.expected.offset = 0.0;
    const bool isUsualSize = signal.expected.size == (type == 1 ? 32 : 64);
    if (isUsualSize) {
        signal.expected.maximum =
            type == 1 ? double(std::numeric_limits<float>::max()) : std::numeric_limits<double>::max();
        signal.expected.minimum = -signal.expected.maximum;
    }
    return true;
}

// The first number must still be one of those that the independent tools name.
bool mayHold(const SignalCase &signal, int number)
{
    const auto *golden = signal.golden;
    return golden == nullptr || std::find(golden->multiplexerIds.begin(), golden->multiplexerIds.end(), number) !=
                                    golden->multiplexerIds.end();
}

bool firstSelector(SignalCase &signal)
{
    DbcSignal &expected = signal.expected;
    const QString &word = signal.text->multiplexWord;
    const bool isNested = word.startsWith(u'm') && word.endsWith(u'M');
    if (isNested) {
        expected.isMultiplexor = false;
        expected.multiplexValue = -1;
    }
    static const QRegularExpression range(QStringLiteral("^(\\d+)-\\d+"));
    const QRegularExpressionMatch match = range.match(signal.text->multiplexRanges);
    if (!match.hasMatch())
        return isNested;
    const int number = match.captured(1).toInt();
    if (hasAsciiName(signal) && mayHold(signal, number)) {
        expected.isMultiplexed = true;
        expected.multiplexValue = number;
    }
    return true;
}

bool positiveDescriptionKeys(SignalCase &signal)
{
    bool applies = false;
    signal.expected.valueDescriptions.clear();
    for (const auto &[key, text] : signal.text->descriptions) {
        QString digits = key;
        applies = digits.startsWith(u'-') || applies;
        digits.remove(u'-');
        bool fits = false;
        const std::uint32_t number = digits.toUInt(&fits);
        if (fits)
            signal.expected.valueDescriptions[number] = text;
    }
    return applies;
}

bool joinedDescriptionLines(SignalCase &signal)
{
    bool applies = false;
    for (auto &[key, text] : signal.expected.valueDescriptions) {
        if (!text.contains(u'\n'))
            continue;
        QStringList lines = text.split(u'\n');
        for (int line = 1; line < lines.size(); ++line)
            lines[line] = lines[line].trimmed();
        text = lines.join(u' ');
        applies = true;
    }
    return applies;
}

bool lostDescriptions(SignalCase &signal)
{
    const bool applies = !hasAsciiName(signal) && !signal.expected.valueDescriptions.empty();
    if (applies)
        signal.expected.valueDescriptions.clear();
    return applies;
}

// In the order in which the reader takes its steps.
constexpr SignalRule signalRules[] = {
    {"short name", "a long name is an attribute here; the name is the one on the signal's line", &shortName},
    {"range derived", "limits that are both zero, in any form, are derived from size, factor and offset",
     &derivedRange},
    {"float by range",
     "limits with an E make a float of 32 or 64 unscaled bits; a declared one without stays an integer", &floatByRange},
    {"signal lost: limits",
     "a signal whose lower limit is above the upper one is refused; so is one with a negative "
     "factor and derived limits",
     &lostByLimits},
    {"signal lost: place", "a size of 0 or above 64, or a start bit above 511, is refused", &lostByPlace},
    {"signal lost: cut", "a message ends where the letters BO_ come next, wherever they stand", &lostByCut},
    {"declared float unscaled", "a declared float loses factor and offset, and takes its type's limits",
     &declaredFloat},
    {"first selector only", "of extended multiplexing the first number of the first range is kept; m3M holds none",
     &firstSelector},
    {"positive keys", "keys of value descriptions have no sign: -1 is read as 1", &positiveDescriptionKeys},
    {"description lines joined", "a value description that runs over lines is joined by blanks",
     &joinedDescriptionLines},
    {"non-ASCII name", "value descriptions of a signal reach it only if its name is ASCII", &lostDescriptions},
};

} // namespace

SignalCase signalCase(const TextSignal &text, const GoldenSignal *golden)
{
    SignalCase result;
    result.text = &text;
    result.golden = golden;
    DbcSignal &signal = result.expected;
    signal.name = golden != nullptr ? golden->name : text.name;
    signal.startBit = golden != nullptr ? golden->start : static_cast<std::uint16_t>(text.startBit);
    signal.size = golden != nullptr ? golden->length : static_cast<std::uint16_t>(text.size);
    signal.isBigEndian = golden != nullptr ? golden->isBigEndian : text.isBigEndian;
    signal.isSigned = golden != nullptr ? golden->isSigned : text.isSigned;
    signal.factor = golden != nullptr ? golden->scale : text.factor;
    signal.offset = golden != nullptr ? golden->offset : text.offset;
    signal.minimum = golden != nullptr ? golden->minimum.value_or(0.0) : text.range.first().toDouble();
    signal.maximum = golden != nullptr ? golden->maximum.value_or(0.0) : text.range.last().toDouble();
    signal.unit = golden != nullptr ? golden->unit : text.unit;
    const bool isFloat = golden != nullptr ? golden->isFloat : text.valueType.value_or(0) > 0;
    signal.valueType = isFloat ? (signal.size == 64 ? 2 : 1) : 0;
    if (golden != nullptr) {
        signal.isMultiplexor = golden->isMultiplexer;
        signal.isMultiplexed = !golden->multiplexerIds.empty();
        signal.multiplexValue = signal.isMultiplexed ? golden->multiplexerIds.front() : -1;
    } else {
        signal.isMultiplexor = text.multiplexWord.endsWith(u'M');
        signal.isMultiplexed = text.multiplexWord.startsWith(u'm');
        signal.multiplexValue = signal.isMultiplexed ? QString(text.multiplexWord).remove(u'M').mid(1).toInt() : -1;
    }
    signal.receivers = text.receivers;
    signal.comment = text.comment.trimmed();
    return result;
}

void applySignalRules(SignalCase &signal)
{
    applyRules(signalRules, signal);
}

void deriveRange(DbcSignal &signal)
{
    const unsigned bits = (signal.isSigned ? signal.size - 1U : signal.size) % 64U;
    const std::uint64_t largest = (std::uint64_t{1} << bits) - 1;
    signal.maximum = static_cast<double>(largest) * signal.factor + signal.offset;
    signal.minimum = signal.offset;
    if (signal.isSigned)
        signal.minimum = -static_cast<double>(std::uint64_t{1} << bits) * signal.factor + signal.offset;
}

std::uint8_t floatKindByRange(const DbcSignal &signal, const QStringList &range)
{
    const bool hasExponent = range.size() == 2 && range.join(QString()).contains(u'E', Qt::CaseInsensitive);
    if (!hasExponent || signal.factor != 1.0 || signal.offset != 0.0)
        return 0;
    return signal.size == 32 ? 1 : signal.size == 64 ? 2 : 0;
}

} // namespace tzcorpus
