// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciDatagramParser.h"

#include "tests/vci/Hex.h"
#include "tests/vci/WireFrames.h"

#include <gtest/gtest.h>

#include <random>

using tztest::bytesOf;
using tztest::deviceFrame;
using tztest::joined;

namespace {

struct Parsed
{
    TzVciDatagramParser::Outcome outcome;
    std::vector<std::vector<TzVciProtocolData>> batches;
};

Parsed parse(const std::vector<std::uint8_t> &datagram)
{
    Parsed parsed;
    TzVciDatagramParser parser;
    parsed.outcome = parser.parse(datagram, [&](const auto &batch) { parsed.batches.push_back(batch); });
    return parsed;
}

std::vector<std::uint8_t> frames(int count)
{
    std::vector<std::uint8_t> datagram;
    for (int i = 0; i < count; ++i) {
        const auto frame = deviceFrame(1, 0x40, static_cast<std::uint8_t>(i), 0, std::vector<std::uint8_t>(24, 0x55));
        datagram.insert(datagram.end(), frame.begin(), frame.end());
    }
    return datagram;
}

} // namespace

TEST(DatagramParser, ReadsEveryField)
{
    const auto parsed = parse(bytesOf("55 AA 0F 60 03 02 04 00 01 02 03 04 99"));
    ASSERT_EQ(parsed.batches.size(), 1u);
    ASSERT_EQ(parsed.batches[0].size(), 1u);
    const TzVciProtocolData &record = parsed.batches[0][0];
    EXPECT_EQ(record.protocol, 0x0F);
    EXPECT_EQ(record.command, 0x60);
    EXPECT_EQ(record.channel, 3);
    EXPECT_EQ(record.param, 2);
    EXPECT_EQ(record.length, 4);
    EXPECT_EQ(tztest::hexOf(std::vector(record.payload.begin(), record.payload.begin() + 5)), "01 02 03 04 00");
    EXPECT_EQ(parsed.outcome.records, 1u);
    EXPECT_EQ(parsed.outcome.leftoverBytes, 0u);
    EXPECT_EQ(parsed.outcome.expectedBytes, 0u);
}

TEST(DatagramParser, AFrameWithoutPayloadIsAFrame)
{
    const auto parsed = parse(bytesOf("55 AA 01 20 00 00 00 00 00"));
    EXPECT_EQ(parsed.outcome.records, 1u);
    EXPECT_EQ(parsed.outcome.leftoverBytes, 0u);
}

TEST(DatagramParser, TwoFramesComeInOneBatchInOrder)
{
    const auto parsed = parse(frames(2));
    ASSERT_EQ(parsed.batches.size(), 1u);
    ASSERT_EQ(parsed.batches[0].size(), 2u);
    EXPECT_EQ(parsed.batches[0][0].channel, 0);
    EXPECT_EQ(parsed.batches[0][1].channel, 1);
}

TEST(DatagramParser, ThirtyTwoFramesAreOneBatch)
{
    const auto parsed = parse(frames(32));
    ASSERT_EQ(parsed.batches.size(), 1u);
    EXPECT_EQ(parsed.batches[0].size(), 32u);
}

TEST(DatagramParser, ThirtyThreeFramesAreABatchOf32AndOneOf1)
{
    const auto parsed = parse(frames(33));
    ASSERT_EQ(parsed.batches.size(), 2u);
    EXPECT_EQ(parsed.batches[0].size(), 32u);
    ASSERT_EQ(parsed.batches[1].size(), 1u);
    EXPECT_EQ(parsed.batches[0][31].channel, 31);
    EXPECT_EQ(parsed.batches[1][0].channel, 32);
    EXPECT_EQ(parsed.outcome.records, 33u);
}

TEST(DatagramParser, ThreeJunkBytesInFrontAreSkippedSilently)
{
    const auto parsed = parse(joined({bytesOf("00 55 FF"), frames(1)}));
    EXPECT_EQ(parsed.outcome.records, 1u);
    EXPECT_EQ(parsed.outcome.leftoverBytes, 0u);
    EXPECT_EQ(parsed.outcome.expectedBytes, 0u);
}

TEST(DatagramParser, JunkBetweenFramesIsSkippedSilently)
{
    const auto parsed = parse(joined({frames(1), bytesOf("01 02 55"), frames(1)}));
    EXPECT_EQ(parsed.outcome.records, 2u);
    EXPECT_EQ(parsed.outcome.leftoverBytes, 0u);
}

TEST(DatagramParser, JunkThatHoldsASyncWordIsReadAsAFrame)
{
    const auto parsed = parse(joined({frames(1), bytesOf("55 55 AA 55"), frames(1)}));
    EXPECT_EQ(parsed.outcome.records, 1u);
    EXPECT_EQ(parsed.outcome.expectedBytes, 73u); // 0x40, the next frame's command, stands where the length is
    EXPECT_EQ(parsed.outcome.leftoverBytes, 36u);
}

TEST(DatagramParser, AFrameOf20BytesCutTo15IsIncompleteWith15Left)
{
    auto frame = deviceFrame(1, 0x40, 0, 0, std::vector<std::uint8_t>(11));
    ASSERT_EQ(frame.size(), 20u);
    frame.resize(15);
    const auto parsed = parse(frame);
    EXPECT_TRUE(parsed.batches.empty());
    EXPECT_EQ(parsed.outcome.expectedBytes, 20u);
    EXPECT_EQ(parsed.outcome.leftoverBytes, 15u);
}

TEST(DatagramParser, FramesBeforeACutOneAreDelivered)
{
    auto datagram = frames(34);
    datagram.pop_back();
    const auto parsed = parse(datagram);
    EXPECT_EQ(parsed.outcome.records, 33u);
    EXPECT_EQ(parsed.outcome.expectedBytes, 33u);
    EXPECT_EQ(parsed.outcome.leftoverBytes, 32u);
}

TEST(DatagramParser, FiveBytesAreLeftOver)
{
    const auto parsed = parse(bytesOf("55 AA 01 40 00"));
    EXPECT_TRUE(parsed.batches.empty());
    EXPECT_EQ(parsed.outcome.expectedBytes, 0u);
    EXPECT_EQ(parsed.outcome.leftoverBytes, 5u);
}

TEST(DatagramParser, AFrameWithFourZeroBytesBehindLeavesFour)
{
    const auto parsed = parse(joined({frames(1), bytesOf("00 00 00 00")}));
    EXPECT_EQ(parsed.outcome.records, 1u);
    EXPECT_EQ(parsed.outcome.expectedBytes, 0u);
    EXPECT_EQ(parsed.outcome.leftoverBytes, 4u);
}

TEST(DatagramParser, HostSyncOrderIsJunk)
{
    const auto parsed = parse(bytesOf("AA 55 0F 60 00 00 01 00 01 00"));
    EXPECT_EQ(parsed.outcome.records, 0u);
    EXPECT_EQ(parsed.outcome.leftoverBytes, 8u); // skipped byte by byte while nine remained
}

TEST(DatagramParser, ALengthAbove122KeepsTheWiresLengthAndCopiesWhatTheRecordHolds)
{
    std::vector<std::uint8_t> payload(300);
    for (std::size_t i = 0; i < payload.size(); ++i)
        payload[i] = static_cast<std::uint8_t>(i);
    const auto parsed = parse(joined({deviceFrame(1, 0x70, 0, 0, payload), frames(1)}));
    ASSERT_EQ(parsed.batches.size(), 1u);
    ASSERT_EQ(parsed.batches[0].size(), 2u);
    EXPECT_EQ(parsed.batches[0][0].length, 300);
    EXPECT_EQ(parsed.batches[0][0].payloadLength(), 122u);
    EXPECT_EQ(parsed.batches[0][0].payload.back(), 121);
    EXPECT_EQ(parsed.batches[0][1].length, 24);
    EXPECT_EQ(parsed.outcome.leftoverBytes, 0u);
}

TEST(DatagramParser, ARecordHoldsNothingOfTheDatagramBefore)
{
    TzVciDatagramParser parser;
    TzVciProtocolData last;
    const auto keep = [&](const auto &batch) { last = batch.back(); };
    parser.parse(deviceFrame(1, 0x40, 0, 0, std::vector<std::uint8_t>(122, 0xFF)), keep);
    parser.parse(deviceFrame(1, 0x40, 0, 0, {7}), keep);
    EXPECT_EQ(last.payload[0], 7);
    for (std::size_t i = 1; i < last.payload.size(); ++i)
        ASSERT_EQ(last.payload[i], 0) << i;
}

TEST(DatagramParser, AnEmptyDatagramIsNothing)
{
    const auto parsed = parse({});
    EXPECT_EQ(parsed.outcome.records, 0u);
    EXPECT_EQ(parsed.outcome.leftoverBytes, 0u);
}

// Every cut of a valid datagram: what is complete arrives, the rest is accounted for.
TEST(DatagramParser, EveryCutOfADatagramIsAccountedFor)
{
    const auto whole = frames(5);
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const auto parsed = parse({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)});
        EXPECT_EQ(parsed.outcome.records, size / 33);
        EXPECT_EQ(parsed.outcome.leftoverBytes, size % 33);
        EXPECT_EQ(parsed.outcome.expectedBytes, size % 33 >= 9 ? 33u : 0u);
    }
}

// Random bytes with sync words strewn in: nothing is read beyond the datagram and the sums stay right.
TEST(DatagramParser, RandomBytesNeverOverrun)
{
    std::mt19937 random(20240501); // NOLINT(cert-msc51-cpp): the same bytes in every run
    TzVciDatagramParser parser;
    for (int round = 0; round < 2000; ++round) {
        std::vector<std::uint8_t> datagram(random() % 600);
        for (std::uint8_t &byte : datagram)
            byte = static_cast<std::uint8_t>(random());
        for (std::size_t i = 0; i + 8 < datagram.size(); i += 9 + random() % 40) {
            datagram[i] = 0x55;
            datagram[i + 1] = 0xAA;
            datagram[i + 7] = static_cast<std::uint8_t>(random() % 3 == 0 ? 1 : 0);
        }
        std::size_t delivered = 0;
        const auto outcome = parser.parse(datagram, [&](const auto &batch) {
            EXPECT_GE(batch.size(), 1u);
            EXPECT_LE(batch.size(), 32u);
            delivered += batch.size();
        });
        EXPECT_EQ(outcome.records, delivered);
        EXPECT_LE(outcome.leftoverBytes, datagram.size());
        if (outcome.expectedBytes != 0)
            EXPECT_GT(outcome.expectedBytes, outcome.leftoverBytes);
        else
            EXPECT_LT(outcome.leftoverBytes, 9u);
    }
}
