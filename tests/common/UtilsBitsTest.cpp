// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/Utils.h"

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <random>
#include <set>
#include <vector>

using Common::Utils;

namespace {

using Bytes = std::vector<unsigned char>;

// The oracle: walks the bits one by one. Gives the DBC numbers of a signal's bits, least significant first.
std::vector<unsigned> bitsOf(unsigned startBit, unsigned bitLength, bool motorola)
{
    std::vector<unsigned> bits;
    unsigned bit = startBit;
    for (unsigned i = 0; i < bitLength; ++i) {
        if (!motorola) {
            bits.push_back(bit++);
            continue;
        }
        bits.insert(bits.begin(), bit);
        bit = bit % 8 == 0 ? bit + 15 : bit - 1; // from the lowest bit of a byte to the highest of the next
    }
    return bits;
}

unsigned long long walkRead(const Bytes &data, const std::vector<unsigned> &bits)
{
    unsigned long long value = 0;
    for (std::size_t i = 0; i < bits.size(); ++i) {
        if (bits[i] / 8 < data.size())
            value |= static_cast<unsigned long long>(data[bits[i] / 8] >> (bits[i] % 8) & 1U) << i;
    }
    return value;
}

std::optional<Bytes> walkWrite(Bytes data, const std::vector<unsigned> &bits, unsigned long long value)
{
    for (std::size_t i = 0; i < bits.size(); ++i) {
        if (bits[i] / 8 >= data.size())
            return std::nullopt;
        const auto mask = static_cast<unsigned char>(1U << (bits[i] % 8));
        unsigned char &byte = data[bits[i] / 8];
        byte = static_cast<unsigned char>((value >> i & 1U) != 0 ? byte | mask : byte & ~mask);
    }
    return data;
}

unsigned long long read(const Bytes &data, unsigned startBit, unsigned bitLength, bool motorola)
{
    const auto length = static_cast<unsigned char>(data.size());
    const auto start = static_cast<unsigned short>(startBit);
    const auto bits = static_cast<unsigned short>(bitLength);
    return motorola ? Utils::getUnsignedSignalValueByMSB(data.data(), length, start, bits)
                    : Utils::getUnsignedSignalValueByLSB(data.data(), length, start, bits);
}

int write(Bytes &data, unsigned startBit, unsigned bitLength, bool motorola, unsigned long long value)
{
    const auto length = static_cast<unsigned char>(data.size());
    const auto start = static_cast<unsigned short>(startBit);
    const auto bits = static_cast<unsigned short>(bitLength);
    return motorola ? Utils::setSignalValueByMSB(data.data(), length, start, bits, value)
                    : Utils::setSignalValueByLSB(data.data(), length, start, bits, value);
}

class UtilsBits : public testing::TestWithParam<bool>
{
};

// Every start bit and length of every frame length: exact-sized buffers let the address sanitizer see a byte too far.
TEST_P(UtilsBits, ReadsAndWritesWhatTheBitWalkDoes)
{
    const bool motorola = GetParam();
    std::mt19937_64 random(20250507);
    for (const std::size_t size : {1U, 2U, 3U, 7U, 8U, 9U, 12U, 16U, 24U, 48U, 64U}) {
        Bytes data(size);
        for (unsigned startBit = 0; startBit < size * 8 + 9; ++startBit) {
            for (unsigned bitLength = 1; bitLength <= 64; bitLength += 1 + (random() & 3U)) {
                for (auto &byte : data)
                    byte = static_cast<unsigned char>(random());
                const auto bits = bitsOf(startBit, bitLength, motorola);
                ASSERT_EQ(read(data, startBit, bitLength, motorola), walkRead(data, bits))
                    << size << " bytes, start " << startBit << ", length " << bitLength;
                const unsigned long long value = random();
                const auto expected = walkWrite(data, bits, value);
                Bytes written = data;
                ASSERT_EQ(write(written, startBit, bitLength, motorola, value) == 0, expected.has_value())
                    << size << " bytes, start " << startBit << ", length " << bitLength;
                ASSERT_EQ(written, expected.value_or(data));
            }
        }
    }
}

TEST_P(UtilsBits, OccupiedBitsAndLowestBitFollowTheBitWalk)
{
    const bool motorola = GetParam();
    for (unsigned startBit = 0; startBit < 512; ++startBit) {
        for (const unsigned bitLength : {1U, 2U, 7U, 8U, 9U, 16U, 63U, 64U}) {
            const auto bits = bitsOf(startBit, bitLength, motorola);
            const auto start = static_cast<unsigned short>(startBit);
            const auto length = static_cast<unsigned short>(bitLength);
            const auto occupied = Utils::getSignalActualSetBits(start, length, motorola);
            ASSERT_EQ(std::set<unsigned>(occupied.begin(), occupied.end()),
                      std::set<unsigned>(bits.begin(), bits.end()));
            ASSERT_EQ(Utils::getSignalActualStartBit(start, length, motorola), bits.front());
        }
    }
}

TEST_P(UtilsBits, SignalsWithoutALengthOrTooLongReadZeroAndAreNotWritten)
{
    Bytes data(16, 0xFF);
    for (const unsigned bitLength : {0U, 65U, 65535U}) {
        EXPECT_EQ(read(data, 7, bitLength, GetParam()), 0U);
        EXPECT_NE(write(data, 7, bitLength, GetParam(), 0), 0);
    }
    EXPECT_EQ(data, Bytes(16, 0xFF));
}

TEST_P(UtilsBits, NoDataReadZeroAndAreNotWritten)
{
    Bytes empty;
    EXPECT_EQ(read(empty, 0, 8, GetParam()), 0U);
    EXPECT_NE(write(empty, 0, 8, GetParam(), 1), 0);
    EXPECT_EQ(read(Bytes(8, 0xFF), 65535, 64, GetParam()), 0U);
}

TEST_P(UtilsBits, TheValueIsCutToTheSignal)
{
    Bytes data(8, 0);
    ASSERT_EQ(write(data, 7, 1, GetParam(), ~0ULL), 0);
    EXPECT_EQ(data, (Bytes{0x80, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_P(UtilsBits, ASignalBeyondTheDataIsNotWritten)
{
    Bytes data(8, 0x55);
    EXPECT_NE(write(data, 63, 9, GetParam(), 0), 0);
    EXPECT_EQ(data, Bytes(8, 0x55));
}

INSTANTIATE_TEST_SUITE_P(Order, UtilsBits, testing::Bool(),
                         [](const auto &test) { return std::string(test.param ? "Motorola" : "Intel"); });

TEST(UtilsBitsExample, MotorolaStartBitIsTheMostSignificantOne)
{
    const Bytes data{0x12, 0x34, 0x56, 0, 0, 0, 0, 0};
    EXPECT_EQ(read(data, 7, 16, true), 0x1234U);
    EXPECT_EQ(read(data, 3, 12, true), 0x234U);
    EXPECT_EQ(Utils::getSignalActualStartBit(7, 16, true), 8);
    EXPECT_EQ(read(data, 0, 16, false), 0x3412U);
    EXPECT_EQ(Utils::getSignalActualStartBit(0, 16, false), 0);
}

TEST(UtilsBitsExample, BitsBeyondTheDataReadAsZero)
{
    const Bytes data{0xFF, 0xFF};
    EXPECT_EQ(read(data, 8, 16, false), 0x00FFU);
    EXPECT_EQ(read(data, 15, 16, true), 0xFF00U);
}

} // namespace
