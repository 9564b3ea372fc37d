// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/Utils.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

// A signal of up to 64 bits touches at most nine bytes: eight are taken as one 64-bit window, whose order is that of
// the signal, and the few bits that a shifted 64-bit signal has in the ninth are put behind. Near the end of the data
// the window stays within it and the signal lies further inside: a copy of a length that is known only at run time
// would cost more than all the rest.

namespace Common {

namespace {

constexpr unsigned windowBytes = 8;
constexpr unsigned windowBits = 64;

bool isSignalLength(unsigned bitLength)
{
    return bitLength >= 1 && bitLength <= windowBits;
}

std::uint64_t lowBits(unsigned count) // 1 to 64
{
    return ~std::uint64_t{0} >> (windowBits - count);
}

// Position in the order in which Motorola signals run: from the highest bit of byte 0 down, then on at byte 1.
unsigned motorolaPosition(unsigned bit)
{
    return bit ^ 7U;
}

// Between the order of the data and that of the machine, both ways.
template <std::endian order> std::uint64_t inOrder(std::uint64_t window)
{
    if constexpr (order == std::endian::native)
        return window;
    else
        return __builtin_bswap64(window);
}

// Data of one to seven bytes, put behind one another from the lowest byte up; the rest is zero.
std::uint64_t loadShort(const unsigned char *data, unsigned dataLength)
{
    std::uint64_t window = 0;
    for (unsigned i = 0; i < dataLength; ++i)
        window |= static_cast<std::uint64_t>(data[i]) << (8U * i);
    return window;
}

void storeShort(unsigned char *data, unsigned dataLength, std::uint64_t window)
{
    for (unsigned i = 0; i < dataLength; ++i)
        data[i] = static_cast<unsigned char>(window >> (8U * i));
}

// Where a signal lies: the window's first byte, and the bits of the window before the signal. More than seven stand
// before it only where the window ends with the data.
struct Place
{
    unsigned firstByte;
    unsigned shift;
};

Place placeOf(unsigned dataLength, unsigned position)
{
    const unsigned lastStart = dataLength < windowBytes ? 0 : dataLength - windowBytes;
    const unsigned firstByte = std::min(position / 8U, lastStart);
    return {firstByte, position - firstByte * 8U};
}

template <std::endian order>
std::uint64_t loadWindow(const unsigned char *data, unsigned dataLength, unsigned firstByte)
{
    if (dataLength < windowBytes) {
        const std::uint64_t window = loadShort(data, dataLength);
        return order == std::endian::little ? window : __builtin_bswap64(window);
    }
    std::uint64_t window = 0;
    std::memcpy(&window, data + firstByte, windowBytes);
    return inOrder<order>(window);
}

template <std::endian order>
void storeWindow(unsigned char *data, unsigned dataLength, unsigned firstByte, std::uint64_t window)
{
    if (dataLength < windowBytes) {
        storeShort(data, dataLength, order == std::endian::little ? window : __builtin_bswap64(window));
        return;
    }
    window = inOrder<order>(window);
    std::memcpy(data + firstByte, &window, windowBytes);
}

// Whether a signal has bits behind the window and there is data. The shift is then 1 to 7.
bool reachesNinthByte(const Place &place, unsigned dataLength, unsigned bitLength)
{
    return place.shift + bitLength > windowBits && place.firstByte + windowBytes < dataLength;
}

bool fits(const unsigned char *data, unsigned dataLength, unsigned position, unsigned bitLength)
{
    return data && isSignalLength(bitLength) && position + bitLength <= dataLength * 8U;
}

bool isReadable(const unsigned char *data, unsigned dataLength, unsigned position, unsigned bitLength)
{
    return data && isSignalLength(bitLength) && position < dataLength * 8U;
}

void replaceBits(std::uint64_t &window, std::uint64_t mask, std::uint64_t value)
{
    window = (window & ~mask) | (value & mask);
}

} // namespace

unsigned long long Utils::getUnsignedSignalValueByLSB(const unsigned char *data, unsigned char dataLength,
                                                      unsigned short startBit, unsigned short bitLength)
{
    if (!isReadable(data, dataLength, startBit, bitLength))
        return 0;
    const Place place = placeOf(dataLength, startBit);
    std::uint64_t value = loadWindow<std::endian::little>(data, dataLength, place.firstByte) >> place.shift;
    if (reachesNinthByte(place, dataLength, bitLength))
        value |= std::uint64_t{data[place.firstByte + windowBytes]} << (windowBits - place.shift);
    return value & lowBits(bitLength);
}

unsigned long long Utils::getUnsignedSignalValueByMSB(const unsigned char *data, unsigned char dataLength,
                                                      unsigned short startBit, unsigned short bitLength)
{
    const unsigned position = motorolaPosition(startBit);
    if (!isReadable(data, dataLength, position, bitLength))
        return 0;
    const Place place = placeOf(dataLength, position);
    std::uint64_t value = loadWindow<std::endian::big>(data, dataLength, place.firstByte) << place.shift;
    if (reachesNinthByte(place, dataLength, bitLength))
        value |= std::uint64_t{data[place.firstByte + windowBytes]} >> (8U - place.shift);
    return value >> (windowBits - bitLength);
}

int Utils::setSignalValueByLSB(unsigned char *data, unsigned char dataLength, unsigned short startBit,
                               unsigned short bitLength, unsigned long long value)
{
    if (!fits(data, dataLength, startBit, bitLength))
        return -1;
    const Place place = placeOf(dataLength, startBit);
    const std::uint64_t mask = lowBits(bitLength);
    std::uint64_t window = loadWindow<std::endian::little>(data, dataLength, place.firstByte);
    replaceBits(window, mask << place.shift, value << place.shift);
    storeWindow<std::endian::little>(data, dataLength, place.firstByte, window);
    if (reachesNinthByte(place, dataLength, bitLength)) {
        unsigned char &last = data[place.firstByte + windowBytes];
        std::uint64_t ninth = last;
        replaceBits(ninth, mask >> (windowBits - place.shift), value >> (windowBits - place.shift));
        last = static_cast<unsigned char>(ninth);
    }
    return 0;
}

int Utils::setSignalValueByMSB(unsigned char *data, unsigned char dataLength, unsigned short startBit,
                               unsigned short bitLength, unsigned long long value)
{
    const unsigned position = motorolaPosition(startBit);
    if (!fits(data, dataLength, position, bitLength))
        return -1;
    const Place place = placeOf(dataLength, position);
    // Both pushed to the upper end: the signal's first bit is the window's highest but for the shift.
    const std::uint64_t mask = lowBits(bitLength) << (windowBits - bitLength);
    const std::uint64_t bits = static_cast<std::uint64_t>(value) << (windowBits - bitLength);
    std::uint64_t window = loadWindow<std::endian::big>(data, dataLength, place.firstByte);
    replaceBits(window, mask >> place.shift, bits >> place.shift);
    storeWindow<std::endian::big>(data, dataLength, place.firstByte, window);
    if (reachesNinthByte(place, dataLength, bitLength)) {
        unsigned char &last = data[place.firstByte + windowBytes];
        std::uint64_t ninth = last;
        replaceBits(ninth, (mask << (8U - place.shift)) & 0xFFU, bits << (8U - place.shift));
        last = static_cast<unsigned char>(ninth);
    }
    return 0;
}

unsigned short Utils::getSignalActualStartBit(unsigned short startBit, unsigned short bitLength, bool motorola)
{
    if (!motorola || bitLength == 0)
        return startBit;
    return static_cast<unsigned short>(motorolaPosition(motorolaPosition(startBit) + bitLength - 1U));
}

std::unordered_set<unsigned short> Utils::getSignalActualSetBits(unsigned short startBit, unsigned short bitLength,
                                                                 bool motorola)
{
    std::unordered_set<unsigned short> bits;
    bits.reserve(bitLength);
    const unsigned first = motorola ? motorolaPosition(startBit) : startBit;
    for (unsigned position = first; position < first + bitLength; ++position) {
        const unsigned bit = motorola ? motorolaPosition(position) : position;
        if (bit <= std::numeric_limits<unsigned short>::max())
            bits.insert(static_cast<unsigned short>(bit));
    }
    return bits;
}

} // namespace Common
