// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/database/corpus/LdfSignalRules.h"

#include "tests/database/corpus/RuleBook.h"

#include <QRegularExpression>

#include <algorithm>
#include <memory>

namespace tzcorpus {

namespace {

struct LdfSignalCase
{
    const QString *text = nullptr;
    const GoldenLdfSignal *golden = nullptr;
    const std::vector<GoldenLdfValue> *encoding = nullptr; ///< null for none
    LdfSignal expected;
};

struct LdfSignalRule
{
    const char *name;
    const char *reason;
    bool (*apply)(LdfSignalCase &signal);
};

// The initial value as it stands in the file, a number or the parts of an array.
QStringList writtenInitial(const LdfSignalCase &signal)
{
    const QRegularExpression line(
        QStringLiteral("\\b%1\\s*:\\s*\\d+\\s*,\\s*(?:\\{([^}]*)\\}|(\\w+))").arg(signal.golden->name));
    const QRegularExpressionMatch match = line.match(*signal.text);
    QStringList parts;
    for (const QString &part : (match.captured(1) + match.captured(2)).split(u','))
        parts += part.trimmed();
    return parts;
}

bool decimalInitial(LdfSignalCase &signal)
{
    const QStringList parts = writtenInitial(signal);
    std::uint64_t value = 0;
    bool applies = false;
    for (int at = 0; at < parts.size() && at < 8; ++at) {
        bool isDecimal = false;
        const std::uint64_t part = parts.at(at).toULongLong(&isDecimal, 10);
        value |= (isDecimal ? part : 0) << (8 * at);
        applies = applies || !isDecimal;
    }
    if (applies)
        signal.expected.value = value;
    return applies;
}

bool isKnownType(const GoldenLdfValue &value)
{
    return value.type == QLatin1String("physical") || value.type == QLatin1String("logical");
}

bool unknownEncoding(LdfSignalCase &signal)
{
    const bool applies =
        signal.encoding != nullptr && std::none_of(signal.encoding->begin(), signal.encoding->end(), &isKnownType);
    if (applies)
        signal.expected.encoding.reset();
    return applies;
}

bool lastRange(LdfSignalCase &signal)
{
    if (signal.encoding == nullptr || !signal.expected.encoding)
        return false;
    const auto ranges = std::count_if(signal.encoding->begin(), signal.encoding->end(),
                                      [](const auto &value) { return value.type == QLatin1String("physical"); });
    return static_cast<std::size_t>(ranges) != signal.expected.encoding->physicalRanges.size();
}

constexpr LdfSignalRule signalRules[] = {
    {"LDF initial value", "initial values are decimal; what is not reads 0", &decimalInitial},
    {"LDF encoding unknown", "an encoding without a physical or a logical value is none", &unknownEncoding},
    {"LDF range replaced", "of ranges that end at the same raw value the last one is kept", &lastRange},
};

std::shared_ptr<const LdfEncoding> encodingOf(const QString &name, const std::vector<GoldenLdfValue> &values)
{
    auto encoding = std::make_shared<LdfEncoding>();
    encoding->name = name;
    for (const GoldenLdfValue &value : values) {
        if (value.type == QLatin1String("physical"))
            encoding->physicalRanges[value.maximum] = {value.minimum, value.maximum, value.scale, value.offset,
                                                       value.unit};
        else if (value.type == QLatin1String("logical"))
            encoding->logicalValues[value.value] = value.text;
    }
    return encoding;
}

} // namespace

LdfSignal expectedSignal(const LdfGolden &golden, const QString &text, const GoldenLdfSignal &signal)
{
    LdfSignalCase result;
    result.text = &text;
    result.golden = &signal;
    LdfSignal &expected = result.expected;
    expected.name = signal.name;
    expected.startBit = signal.offset;
    expected.size = signal.width;
    for (std::size_t at = 0; at < signal.initial.size() && at < 8; ++at)
        expected.value |= signal.initial[at] << (8 * at);
    expected.publisher = signal.publisher;
    expected.subscribers = signal.subscribers;
    const auto encoding = golden.encodings.find(signal.encoding);
    if (encoding != golden.encodings.end()) {
        result.encoding = &encoding->second;
        expected.encoding = encodingOf(encoding->first, encoding->second);
    }
    applyRules(signalRules, result);
    return result.expected;
}

} // namespace tzcorpus
