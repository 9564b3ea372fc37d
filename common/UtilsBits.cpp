// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/Utils.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

// A signal of up to 64 bits touches at most nine bytes: the first eight are taken as one 64-bit window, whose order is
// that of the signal, and the few bits that a shifted 64-bit signal has in the ninth are put behind.

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

template <std::endian order> std::uint64_t inOrder(std::uint64_t window)
{
    if constexpr (order == std::endian::native)
        return window;
    else
        return __builtin_bswap64(window);
}

// Bytes that are not there read as zero.
template <std::endian order>
std::uint64_t loadWindow(const unsigned char *data, unsigned dataLength, unsigned firstByte)
{
    std::uint64_t window = 0;
    if (firstByte + windowBytes <= dataLength)
        std::memcpy(&window, data + firstByte, windowBytes);
    else if (firstByte < dataLength)
        std::memcpy(&window, data + firstByte, dataLength - firstByte);
    return inOrder<order>(window);
}

template <std::endian order>
void storeWindow(unsigned char *data, unsigned dataLength, unsigned firstByte, std::uint64_t window)
{
    window = inOrder<order>(window);
    std::memcpy(data + firstByte, &window, std::min(windowBytes, dataLength - firstByte));
}

std::uint64_t ninthByte(const unsigned char *data, unsigned dataLength, unsigned firstByte)
{
    return firstByte + windowBytes < dataLength ? data[firstByte + windowBytes] : 0;
}

bool fits(const unsigned char *data, unsigned dataLength, unsigned position, unsigned bitLength)
{
    return data && isSignalLength(bitLength) && position + bitLength <= dataLength * 8U;
}

void replaceBits(std::uint64_t &window, std::uint64_t mask, std::uint64_t value)
{
    window = (window & ~mask) | (value & mask);
}

} // namespace

unsigned long long Utils::getUnsignedSignalValueByLSB(const unsigned char *data, unsigned char dataLength,
                                                      unsigned short startBit, unsigned short bitLength)
{
    if (!data || !isSignalLength(bitLength))
        return 0;
    const unsigned firstByte = startBit / 8U;
    const unsigned shift = startBit % 8U;
    std::uint64_t value = loadWindow<std::endian::little>(data, dataLength, firstByte) >> shift;
    if (shift + bitLength > windowBits)
        value |= ninthByte(data, dataLength, firstByte) << (windowBits - shift);
    return value & lowBits(bitLength);
}

unsigned long long Utils::getUnsignedSignalValueByMSB(const unsigned char *data, unsigned char dataLength,
                                                      unsigned short startBit, unsigned short bitLength)
{
    if (!data || !isSignalLength(bitLength))
        return 0;
    const unsigned position = motorolaPosition(startBit);
    const unsigned firstByte = position / 8U;
    const unsigned shift = position % 8U;
    std::uint64_t value = loadWindow<std::endian::big>(data, dataLength, firstByte) << shift;
    if (shift + bitLength > windowBits)
        value |= ninthByte(data, dataLength, firstByte) >> (8U - shift);
    return value >> (windowBits - bitLength);
}

int Utils::setSignalValueByLSB(unsigned char *data, unsigned char dataLength, unsigned short startBit,
                               unsigned short bitLength, unsigned long long value)
{
    if (!fits(data, dataLength, startBit, bitLength))
        return -1;
    const unsigned firstByte = startBit / 8U;
    const unsigned shift = startBit % 8U;
    const std::uint64_t mask = lowBits(bitLength);
    std::uint64_t window = loadWindow<std::endian::little>(data, dataLength, firstByte);
    replaceBits(window, mask << shift, value << shift);
    storeWindow<std::endian::little>(data, dataLength, firstByte, window);
    if (shift + bitLength > windowBits) {
        std::uint64_t ninth = data[firstByte + windowBytes];
        replaceBits(ninth, mask >> (windowBits - shift), value >> (windowBits - shift));
        data[firstByte + windowBytes] = static_cast<unsigned char>(ninth);
    }
    return 0;
}

int Utils::setSignalValueByMSB(unsigned char *data, unsigned char dataLength, unsigned short startBit,
                               unsigned short bitLength, unsigned long long value)
{
    const unsigned position = motorolaPosition(startBit);
    if (!fits(data, dataLength, position, bitLength))
        return -1;
    const unsigned firstByte = position / 8U;
    const unsigned shift = position % 8U;
    // Both pushed to the upper end: the signal's first bit is the window's highest but for the shift.
    const std::uint64_t mask = lowBits(bitLength) << (windowBits - bitLength);
    const std::uint64_t bits = static_cast<std::uint64_t>(value) << (windowBits - bitLength);
    std::uint64_t window = loadWindow<std::endian::big>(data, dataLength, firstByte);
    replaceBits(window, mask >> shift, bits >> shift);
    storeWindow<std::endian::big>(data, dataLength, firstByte, window);
    if (shift + bitLength > windowBits) {
        std::uint64_t ninth = data[firstByte + windowBytes];
        replaceBits(ninth, (mask << (8U - shift)) & 0xFFU, bits << (8U - shift));
        data[firstByte + windowBytes] = static_cast<unsigned char>(ninth);
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
