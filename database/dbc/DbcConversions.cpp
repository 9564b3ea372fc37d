// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcConversions.h"

#include "common/Utils.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace {

using Common::Utils;

constexpr unsigned wholeSize = 64; // bits of a raw value

static_assert(std::numeric_limits<float>::is_iec559 && std::numeric_limits<double>::is_iec559,
              "raw values of float signals are the bits of our own floats");

std::uint64_t lowBits(unsigned count) // 1 to 64
{
    return ~std::uint64_t{0} >> (wholeSize - count);
}

bool isPartSize(unsigned size)
{
    return size - 1U < wholeSize - 1U; // 1 to 63
}

bool isNegative(std::uint64_t raw, unsigned size)
{
    return isPartSize(size) && (raw >> (size - 1U) & 1U) != 0;
}

// A raw value without its sign bit set stays as it is, whatever stands above that bit.
std::uint64_t signExtended(std::uint64_t raw, unsigned size)
{
    return isNegative(raw, size) ? raw | ~lowBits(size) : raw;
}

constexpr double twoTo63 = 9223372036854775808.0;
constexpr double twoTo64 = 18446744073709551616.0;

// For whole numbers and NaN.
std::int64_t toSigned(double number)
{
    if (number >= twoTo63)
        return std::numeric_limits<std::int64_t>::max();
    if (number < -twoTo63)
        return std::numeric_limits<std::int64_t>::min();
    return std::isnan(number) ? 0 : static_cast<std::int64_t>(number);
}

std::uint64_t toUnsigned(double number)
{
    if (number >= twoTo64)
        return std::numeric_limits<std::uint64_t>::max();
    if (number >= twoTo63)
        return static_cast<std::uint64_t>(number);
    return static_cast<std::uint64_t>(toSigned(number));
}

// The bit operations count bytes in eight bits, which is more than any frame has.
unsigned char byteCount(std::size_t length)
{
    return static_cast<unsigned char>(std::min<std::size_t>(length, std::numeric_limits<unsigned char>::max()));
}

std::uint64_t readRaw(const std::uint8_t *data, unsigned char length, const DbcSignal &signal)
{
    return signal.isBigEndian ? Utils::getUnsignedSignalValueByMSB(data, length, signal.startBit, signal.size)
                              : Utils::getUnsignedSignalValueByLSB(data, length, signal.startBit, signal.size);
}

int writeRaw(std::uint8_t *data, unsigned char length, const DbcSignal &signal)
{
    return signal.isBigEndian ? Utils::setSignalValueByMSB(data, length, signal.startBit, signal.size, signal.value)
                              : Utils::setSignalValueByLSB(data, length, signal.startBit, signal.size, signal.value);
}

} // namespace

double getSignalPhysicalValue(const DbcSignal &signal) noexcept
{
    if (signal.valueType == DbcValueType::float32)
        return static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(signal.value)));
    if (signal.valueType == DbcValueType::float64)
        return std::bit_cast<double>(signal.value);
    const bool asSigned = signal.isSigned && (signal.size == wholeSize || isNegative(signal.value, signal.size));
    const double raw = asSigned
                           ? static_cast<double>(static_cast<std::int64_t>(signExtended(signal.value, signal.size)))
                           : static_cast<double>(signal.value);
    return raw * signal.factor + signal.offset;
}

std::uint64_t physicalToRawValue(double physical, const DbcSignal &signal) noexcept
{
    if (signal.valueType == DbcValueType::float32)
        return std::bit_cast<std::uint32_t>(static_cast<float>(physical));
    if (signal.valueType == DbcValueType::float64)
        return std::bit_cast<std::uint64_t>(physical);
    const double shifted = physical - signal.offset;
    const double number = std::round(signal.factor == 0.0 ? shifted : shifted / signal.factor);
    if (!signal.isSigned)
        return toUnsigned(number);
    if (signal.size < 1 || signal.size > wholeSize)
        return 0;
    return static_cast<std::uint64_t>(toSigned(number)) & lowBits(signal.size);
}

void decodeSignal(const std::uint8_t *data, std::size_t length, DbcSignal &signal) noexcept
{
    signal.value = readRaw(data, byteCount(length), signal);
}

int decodeMessage(const std::uint8_t *data, std::size_t length, DbcMessage &message) noexcept
{
    if (!data || length < message.size)
        return -1;
    const unsigned char bytes = byteCount(length);
    for (DbcSignal &signal : message.signals)
        signal.value = readRaw(data, bytes, signal);
    return 0;
}

QByteArray encodeMessage(const DbcMessage &message)
{
    QByteArray payload(message.size, '\0');
    auto *data = reinterpret_cast<std::uint8_t *>(payload.data());
    for (const DbcSignal &signal : message.signals) {
        if (writeRaw(data, message.size, signal) != 0)
            return {};
    }
    return payload;
}

QString formatSignalValue(const DbcSignal &signal)
{
    const auto description = signal.valueDescriptions.find(static_cast<std::uint32_t>(signal.value));
    if (description != signal.valueDescriptions.end())
        return QStringLiteral("%1 - %2").arg(QString::number(signal.value), description->second);
    return QString::number(getSignalPhysicalValue(signal), 'g', 10);
}

bool isPhysicalInRange(double physical, const DbcSignal &signal) noexcept
{
    return physical >= signal.minimum && signal.maximum >= physical;
}

bool isRawInRange(std::uint64_t raw, const DbcSignal &signal) noexcept
{
    if (signal.size < 1 || signal.size > wholeSize)
        return false;
    if (signal.size == wholeSize)
        return true;
    if (!signal.isSigned)
        return raw <= lowBits(signal.size);
    const auto number = static_cast<std::int64_t>(signExtended(raw, signal.size));
    const auto highest = static_cast<std::int64_t>(lowBits(signal.size) >> 1U);
    return number >= -highest - 1 && number <= highest;
}
