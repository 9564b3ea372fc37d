// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfConversions.h"

#include "common/Utils.h"
#include "database/text/Numbers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

using Common::Utils;

constexpr std::size_t maximumBytes = 255; // what a frame's size can say
constexpr int rawBits = 64;
constexpr double defaultPeriodMs = 100.0;
constexpr int physicalDigits = 6;

using FrameBytes = std::array<std::uint8_t, maximumBytes>;

bool fillFrame(const LdfFrame &frame, FrameBytes &bytes)
{
    if (frame.size == 0)
        return false;
    return std::all_of(frame.signals.begin(), frame.signals.end(), [&](const auto &each) {
        const LdfSignal &signal = each.second;
        return Utils::setSignalValueByLSB(bytes.data(), frame.size, signal.startBit, signal.size, signal.value) == 0;
    });
}

// Encodings look at the low half word of a value alone.
std::uint32_t lookupKey(const LdfSignal &signal)
{
    return static_cast<std::uint32_t>(signal.value & 0xFFFFU);
}

// The range that a value falls to: ranges are kept by their upper end, so in the middle of one the first range counts.
const LdfPhysicalRange *chooseRange(const LdfSignal &signal)
{
    if (!signal.encoding || signal.encoding->physicalRanges.empty())
        return nullptr;
    const auto &ranges = signal.encoding->physicalRanges;
    const std::uint32_t key = lookupKey(signal);
    const auto above = ranges.upper_bound(key);
    if (ranges.size() > 1 && above != ranges.begin()) {
        const LdfPhysicalRange &range = std::prev(above)->second;
        if (key >= range.minRaw && key <= range.maxRaw)
            return &range;
    }
    return &ranges.begin()->second;
}

bool liesWithin(double value, const LdfPhysicalRange &range)
{
    const double first = range.minRaw * range.factor + range.offset;
    const double last = range.maxRaw * range.factor + range.offset;
    return value >= std::min(first, last) && value <= std::max(first, last); // a negative factor turns them round
}

bool isLogicalKey(double value, const LdfEncoding &encoding)
{
    if (!(value >= 0.0 && value < 4294967296.0)) // of 32 bits; false for what is no number too
        return false;
    return encoding.logicalValues.count(static_cast<std::uint32_t>(value)) > 0;
}

bool isRawValue(double value, std::uint16_t size)
{
    const double beyond = std::ldexp(1.0, std::min<int>(size, rawBits));
    // From 2^53 on the largest raw value is no double, and every smaller double is whole.
    return value >= 0.0 && (value <= beyond - 1.0 && value < beyond);
}

// Width of one part of a byte array; 0 where no part can be placed.
int partWidth(std::uint16_t size, std::size_t parts)
{
    if (parts == 0)
        return 0;
    const auto width = static_cast<std::uint8_t>(size / parts);
    return width > 8 ? 0 : width;
}

// Takes the next part of a list between commas, empty ones left out; false behind the last.
bool takePart(QStringView &list, QStringView &part)
{
    while (list.startsWith(u','))
        list = list.mid(1);
    const qsizetype end = list.indexOf(u',');
    part = end < 0 ? list : list.left(end);
    list = list.mid(part.size());
    return !part.isEmpty();
}

// An array may have any number of parts. All count, for the width, but only those that lie within the value are read.
std::uint64_t rawByteArray(const QString &text, std::uint16_t size)
{
    QString inside = text;
    inside.remove(u'{').remove(u'}');
    QStringView part;
    std::size_t parts = 0;
    for (QStringView rest(inside); takePart(rest, part);)
        ++parts;
    const int width = partWidth(size, parts);
    const std::uint64_t mask = (std::uint64_t{1} << width) - 1;
    std::uint64_t raw = 0;
    QStringView rest(inside);
    for (int shift = 0; width > 0 && shift < rawBits && takePart(rest, part); shift += width)
        raw |= (Common::Numbers::integerOrZero<std::uint64_t>(part) & mask) << shift;
    return raw;
}

template <typename Signal, typename Frame> std::vector<Signal *> sortedSignals(Frame &frame, LdfSignalOrder order)
{
    std::vector<Signal *> sorted;
    sorted.reserve(frame.signals.size());
    for (auto &[name, signal] : frame.signals)
        sorted.push_back(&signal);
    const auto isBefore = [order](const LdfSignal *left, const LdfSignal *right) {
        return order == LdfSignalOrder::size ? left->size < right->size : left->startBit < right->startBit;
    };
    if (order != LdfSignalOrder::name) // the map has them by name already
        std::stable_sort(sorted.begin(), sorted.end(), isBefore);
    return sorted;
}

} // namespace

QByteArray encodeFrame(const LdfFrame &frame)
{
    FrameBytes bytes{};
    if (!fillFrame(frame, bytes))
        return {};
    return QByteArray(reinterpret_cast<const char *>(bytes.data()), frame.size);
}

int encodeFrame(const LdfFrame &frame, std::uint8_t *buffer, std::size_t length)
{
    FrameBytes bytes{};
    if (buffer == nullptr || length == 0 || length < frame.size || !fillFrame(frame, bytes))
        return -1;
    std::memcpy(buffer, bytes.data(), frame.size);
    return 0;
}

std::uint32_t decodeFrame(const std::uint8_t *data, std::size_t length, LdfFrame &frame)
{
    if (data == nullptr || length == 0 || length < frame.size)
        return ldfDecodeFailed;
    const auto bytes = static_cast<std::uint8_t>(std::min(length, maximumBytes));
    for (auto &[name, signal] : frame.signals)
        signal.value = Utils::getUnsignedSignalValueByLSB(data, bytes, signal.startBit, signal.size);
    return 0;
}

double getFramePeriod(const LdfFrame &frame)
{
    if (frame.minPeriod > 0.0)
        return frame.minPeriod;
    if (frame.type == LdfFrameType::eventTriggered && frame.maxPeriod > 0.0)
        return frame.maxPeriod;
    return frame.type == LdfFrameType::sporadic ? 0.0 : defaultPeriodMs;
}

std::uint64_t rawInitialValue(const QString &initialValue, std::uint16_t size)
{
    const QString text = initialValue.trimmed();
    if (text.startsWith(u'{') && text.endsWith(u'}'))
        return rawByteArray(text, size);
    return Common::Numbers::integerOrZero<std::uint64_t>(text);
}

QString formatSignalValue(const LdfSignal &signal)
{
    if (!signal.encoding)
        return QString::number(signal.value);
    const auto &logicalValues = signal.encoding->logicalValues;
    const auto logical = logicalValues.find(lookupKey(signal));
    if (logical != logicalValues.end())
        return QStringLiteral("%1 - %2").arg(QString::number(logical->first), logical->second);
    const LdfPhysicalRange *range = chooseRange(signal);
    if (range == nullptr)
        return QString::number(signal.value);
    const double physical = static_cast<double>(signal.value) * range->factor + range->offset;
    return QStringLiteral("%1 %2").arg(QString::number(physical, 'g', physicalDigits), range->unit);
}

LdfSignalRange getSignalRange(const LdfSignal &signal)
{
    if (signal.encoding && !signal.encoding->physicalRanges.empty())
        return {std::numeric_limits<double>::lowest(), std::numeric_limits<double>::max()};
    return {0.0, static_cast<double>((std::uint64_t{1} << (signal.size % rawBits)) - 1)};
}

QString getSignalUnit(const LdfSignal &signal)
{
    const LdfPhysicalRange *range = chooseRange(signal);
    return range == nullptr ? QString() : range->unit;
}

bool isSignalValueValid(double value, const LdfSignal &signal)
{
    if (!signal.encoding || signal.encoding->physicalRanges.empty())
        return isRawValue(value, signal.size);
    const auto &ranges = signal.encoding->physicalRanges;
    return std::any_of(ranges.begin(), ranges.end(),
                       [value](const auto &each) { return liesWithin(value, each.second); }) ||
           isLogicalKey(value, *signal.encoding);
}

std::vector<const LdfSignal *> getSortedSignals(const LdfFrame &frame, LdfSignalOrder order)
{
    return sortedSignals<const LdfSignal>(frame, order);
}

std::vector<LdfSignal *> getSortedSignals(LdfFrame &frame, LdfSignalOrder order)
{
    return sortedSignals<LdfSignal>(frame, order);
}
