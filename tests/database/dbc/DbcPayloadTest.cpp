// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcConversions.h"
#include "tests/support/AllocationCounter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

// The oracle: bit numbers of a signal, least significant first, found by walking from bit to bit.
std::vector<unsigned> bitsOf(const DbcSignal &signal)
{
    std::vector<unsigned> bits;
    unsigned bit = signal.startBit;
    for (unsigned i = 0; i < signal.size; ++i) {
        bits.push_back(bit);
        if (!signal.isBigEndian)
            ++bit;
        else
            bit = bit % 8 == 0 ? bit + 15 : bit - 1; // from the lowest bit of a byte to the highest of the next
    }
    if (signal.isBigEndian)
        std::reverse(bits.begin(), bits.end());
    return bits;
}

std::uint64_t walkedValue(const Bytes &data, const std::vector<unsigned> &bits)
{
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bits.size(); ++i) {
        if (bits[i] / 8 < data.size())
            value |= std::uint64_t{static_cast<std::uint8_t>(data[bits[i] / 8] >> bits[i] % 8 & 1)} << i;
    }
    return value;
}

bool liesWithin(const std::vector<unsigned> &bits, std::size_t bytes)
{
    return std::all_of(bits.begin(), bits.end(), [&](unsigned bit) { return bit / 8 < bytes; });
}

Bytes walkedPayload(std::size_t size, const std::vector<unsigned> &bits, std::uint64_t value)
{
    Bytes data(size, 0);
    for (std::size_t i = 0; i < bits.size(); ++i)
        data[bits[i] / 8] = static_cast<std::uint8_t>(data[bits[i] / 8] | (value >> i & 1U) << bits[i] % 8);
    return data;
}

Bytes toBytes(const QByteArray &payload)
{
    return Bytes(payload.begin(), payload.end());
}

DbcSignal signalAt(unsigned startBit, unsigned size, bool isBigEndian)
{
    DbcSignal signal;
    signal.startBit = static_cast<std::uint16_t>(startBit);
    signal.size = static_cast<std::uint16_t>(size);
    signal.isBigEndian = isBigEndian;
    return signal;
}

DbcMessage messageOf(unsigned size, std::vector<DbcSignal> content)
{
    DbcMessage message;
    message.size = static_cast<std::uint8_t>(size);
    message.signals = std::move(content);
    return message;
}

class DbcPayload : public testing::TestWithParam<bool>
{
};

// Every start bit and every size: what is encoded is what the walk writes, and decoding gives the value back.
TEST_P(DbcPayload, EncodesAndDecodesWhatTheBitWalkDoes)
{
    std::mt19937_64 random(20250507);
    for (const unsigned bytes : {1U, 2U, 5U, 7U, 8U, 9U, 12U, 64U}) {
        for (unsigned startBit = 0; startBit < bytes * 8; ++startBit) {
            for (unsigned size = 1; size <= 64; ++size) {
                DbcMessage message = messageOf(bytes, {signalAt(startBit, size, GetParam())});
                DbcSignal &signal = message.signals.front();
                const std::uint64_t value = random() >> (64 - size);
                signal.value = value;
                const auto bits = bitsOf(signal);
                const Bytes payload = toBytes(encodeMessage(message));
                if (!liesWithin(bits, bytes)) {
                    ASSERT_TRUE(payload.empty()) << bytes << " bytes, " << startBit << "|" << size;
                    continue;
                }
                ASSERT_EQ(payload, walkedPayload(bytes, bits, value)) << bytes << " bytes, " << startBit << "|" << size;
                signal.value = ~value;
                ASSERT_EQ(decodeMessage(payload.data(), payload.size(), message), 0);
                ASSERT_EQ(signal.value, value) << bytes << " bytes, " << startBit << "|" << size;
            }
        }
    }
}

// Random payloads, cut anywhere: exact-sized buffers let the address sanitizer see a byte too far.
TEST_P(DbcPayload, BitsBeyondThePayloadReadAsZero)
{
    std::mt19937_64 random(7);
    for (unsigned bytes = 1; bytes <= 64; bytes += bytes < 16 ? 1 : 7) {
        Bytes data(bytes);
        for (unsigned startBit = 0; startBit < 512; startBit += 1 + random() % 3) {
            for (unsigned size = 1; size <= 64; size += 1 + static_cast<unsigned>(random() % 4)) {
                std::generate(data.begin(), data.end(), [&] { return static_cast<std::uint8_t>(random()); });
                DbcSignal signal = signalAt(startBit, size, GetParam());
                decodeSignal(data.data(), data.size(), signal);
                ASSERT_EQ(signal.value, walkedValue(data, bitsOf(signal)))
                    << bytes << " bytes, " << startBit << "|" << size;
            }
        }
    }
}

// What the raw value stands for survives the way through a payload, for every size, signed and unsigned.
TEST_P(DbcPayload, PhysicalValuesSurviveThePayload)
{
    std::mt19937_64 random(11);
    for (unsigned size = 1; size <= 64; ++size) {
        for (unsigned round = 0; round < 200; ++round) {
            DbcSignal signal = signalAt(GetParam() ? 7 : 3, size, GetParam());
            signal.isSigned = round % 2 != 0;
            signal.factor = 0.25; // a power of two, and values of at most 50 bits: no rounding on the way
            signal.offset = -40.0;
            const std::uint64_t raw = random() >> (64 - std::min(size, 50U));
            signal.value = raw;
            const double physical = getSignalPhysicalValue(signal);
            signal.value = physicalToRawValue(physical, signal);
            ASSERT_EQ(signal.value, raw) << "size " << size;
            DbcMessage message = messageOf(9, {signal});
            const Bytes payload = toBytes(encodeMessage(message));
            message.signals.front().value = 0;
            ASSERT_EQ(decodeMessage(payload.data(), payload.size(), message), 0);
            ASSERT_EQ(getSignalPhysicalValue(message.signals.front()), physical) << "size " << size;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Order, DbcPayload, testing::Bool(),
                         [](const auto &test) { return std::string(test.param ? "Motorola" : "Intel"); });

TEST(DbcMessagePayload, DecodingAllocatesNothing)
{
    DbcMessage message = messageOf(8, {signalAt(0, 12, false), signalAt(23, 16, true), signalAt(32, 32, false)});
    message.signals.back().valueType = 1;
    const Bytes payload{1, 2, 3, 4, 5, 6, 7, 8};
    double sum = 0.0;
    const std::size_t before = tztest::allocationsOfThisThread();
    const int result = decodeMessage(payload.data(), payload.size(), message);
    for (DbcSignal &signal : message.signals) {
        decodeSignal(payload.data(), payload.size(), signal);
        sum += getSignalPhysicalValue(signal);
    }
    const std::size_t after = tztest::allocationsOfThisThread();
    EXPECT_EQ(after, before);
    EXPECT_EQ(result, 0);
    EXPECT_TRUE(std::isfinite(sum));
}

TEST(DbcMessagePayload, NoDataAndShortDataAreRefusedAndChangeNothing)
{
    DbcMessage message = messageOf(8, {signalAt(0, 8, false)});
    message.signals.front().value = 77;
    const Bytes payload(8, 1);
    EXPECT_EQ(decodeMessage(nullptr, 8, message), -1);
    EXPECT_EQ(decodeMessage(payload.data(), 7, message), -1);
    EXPECT_EQ(message.signals.front().value, 77U);
    EXPECT_EQ(decodeMessage(payload.data(), 8, message), 0);
    EXPECT_EQ(message.signals.front().value, 1U);
}

TEST(DbcMessagePayload, NoDataForOneSignalReadsZero)
{
    DbcSignal signal = signalAt(0, 8, false);
    signal.value = 77;
    decodeSignal(nullptr, 8, signal);
    EXPECT_EQ(signal.value, 0U);
}

TEST(DbcMessagePayload, ALongerPayloadThanTheMessageIsRead)
{
    DbcMessage message = messageOf(2, {signalAt(8, 16, false)});
    const Bytes payload{0x11, 0x22, 0x33, 0x44};
    ASSERT_EQ(decodeMessage(payload.data(), payload.size(), message), 0);
    EXPECT_EQ(message.signals.front().value, 0x3322U);
}

TEST(DbcMessagePayload, AnyLengthIsTaken)
{
    const Bytes payload(300, 0xFF);
    for (const std::size_t length : {std::size_t{255}, std::size_t{256}, std::size_t{300}}) {
        for (const bool isBigEndian : {false, true}) {
            DbcSignal signal = signalAt(8, 8, isBigEndian);
            decodeSignal(payload.data(), length, signal);
            EXPECT_EQ(signal.value, 0xFFU) << length;
        }
    }
    DbcSignal beyond = signalAt(65528, 8, false);
    decodeSignal(payload.data(), payload.size(), beyond);
    EXPECT_EQ(beyond.value, 0U);
}

TEST(DbcMessagePayload, AMessageWithoutSignalsDecodesAndEncodesToZeroes)
{
    DbcMessage message = messageOf(3, {});
    const Bytes payload(3, 0xAA);
    EXPECT_EQ(decodeMessage(payload.data(), payload.size(), message), 0);
    EXPECT_EQ(toBytes(encodeMessage(message)), Bytes(3, 0));
    EXPECT_EQ(decodeMessage(nullptr, 3, message), -1);
}

TEST(DbcMessagePayload, AMessageOfNoBytesEncodesToNone)
{
    EXPECT_TRUE(encodeMessage(messageOf(0, {})).isEmpty());
    EXPECT_TRUE(encodeMessage(messageOf(0, {signalAt(0, 1, false)})).isEmpty());
}

TEST(DbcMessagePayload, ASignalPastTheEndLeavesNothing)
{
    EXPECT_TRUE(encodeMessage(messageOf(2, {signalAt(0, 8, false), signalAt(12, 8, false)})).isEmpty());
    EXPECT_TRUE(encodeMessage(messageOf(2, {signalAt(0, 8, false), signalAt(15, 9, true)})).isEmpty());
}

// A signal named ExtendedVersion... passes the reader whatever its size.
TEST(DbcMessagePayload, ASignalOfMoreThan64BitsReadsZeroAndLeavesNothing)
{
    DbcMessage message = messageOf(64, {signalAt(0, 128, false)});
    const Bytes payload(64, 0xFF);
    message.signals.front().value = 5;
    EXPECT_TRUE(encodeMessage(message).isEmpty());
    ASSERT_EQ(decodeMessage(payload.data(), payload.size(), message), 0);
    EXPECT_EQ(message.signals.front().value, 0U);
}

TEST(DbcMessagePayload, TheLaterOfTwoSignalsOnTheSameBitsWins)
{
    DbcMessage message = messageOf(1, {signalAt(0, 8, false), signalAt(0, 4, false)});
    message.signals[0].value = 0xFF;
    message.signals[1].value = 0x2;
    EXPECT_EQ(toBytes(encodeMessage(message)), Bytes{0xF2});
}

TEST(DbcMessagePayload, MoreBitsThanTheSignalHasStayOutOfThePayload)
{
    DbcMessage message = messageOf(1, {signalAt(2, 3, false)});
    message.signals.front().value = ~std::uint64_t{0};
    EXPECT_EQ(toBytes(encodeMessage(message)), Bytes{0x1C});
}

} // namespace
