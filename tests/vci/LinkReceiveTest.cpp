// SPDX-License-Identifier: GPL-3.0-or-later
// What a link makes of the datagrams that arrive.
#include "tests/vci/Hex.h"
#include "tests/vci/LinkFixture.h"
#include "tests/vci/WireFrames.h"

#include <array>
#include <cstdio>
#include <mutex>
#include <pthread.h>
#include <random>
#include <thread>

using tztest::bytesOf;
using tztest::deviceFrame;
using tztest::joined;

namespace {

constexpr char connectedLine[] = "Connection closed by server: ";

class LinkReceive : public tztest::LinkFixture
{
protected:
    // 33 bytes, its number in the channel field.
    static std::vector<std::uint8_t> frames(int count)
    {
        std::vector<std::uint8_t> datagram;
        for (int i = 0; i < count; ++i) {
            const auto frame = deviceFrame(1, 0x40, static_cast<std::uint8_t>(i), 0, std::vector<std::uint8_t>(24));
            datagram.insert(datagram.end(), frame.begin(), frame.end());
        }
        return datagram;
    }
    // A frame sent behind what a test is about: once it is delivered, all before it is done.
    bool waitForSentinel()
    {
        m_peer.send(deviceFrame(0xEE, 0, 0, 0, {}));
        return tztest::waitFor([this] {
            const auto all = batches();
            return !all.empty() && all.back().back().protocol == 0xEE;
        });
    }
};

} // namespace

TEST_F(LinkReceive, TwoFramesInOneDatagramComeInOneBatchInOrder)
{
    connectLink();
    m_peer.send(frames(2));
    ASSERT_TRUE(tztest::waitFor([this] { return !batches().empty(); }));
    const auto all = batches();
    ASSERT_EQ(all.size(), 1u);
    ASSERT_EQ(all[0].size(), 2u);
    EXPECT_EQ(all[0][0].channel, 0);
    EXPECT_EQ(all[0][1].channel, 1);
    EXPECT_EQ(m_link.recordsReceived(), 2u);
    EXPECT_EQ(m_link.bytesReceived(), 66u);
}

TEST_F(LinkReceive, ThirtyThreeFramesAreABatchOf32AndOneOf1)
{
    connectLink();
    m_peer.send(frames(33));
    ASSERT_TRUE(tztest::waitFor([this] { return batches().size() == 2; }));
    const auto all = batches();
    EXPECT_EQ(all[0].size(), 32u);
    EXPECT_EQ(all[1].size(), 1u);
    EXPECT_EQ(all[1][0].channel, 32);
    EXPECT_EQ(m_link.recordsReceived(), 33u);
}

TEST_F(LinkReceive, ABatchNeverSpansTwoDatagrams)
{
    connectLink();
    m_peer.send(frames(1));
    m_peer.send(frames(1));
    ASSERT_TRUE(tztest::waitFor([this] { return batches().size() == 2; }));
}

TEST_F(LinkReceive, ThreeJunkBytesInFrontGiveTheFrameAndNoWarning)
{
    connectLink();
    m_peer.send(joined({bytesOf("01 02 03"), frames(1)}));
    ASSERT_TRUE(waitForSentinel());
    EXPECT_EQ(batches().size(), 2u);
    EXPECT_EQ(m_log.countContaining(2, ""), 0u);
}

TEST_F(LinkReceive, AFrameOf20BytesCutTo15GivesBothWarnings)
{
    connectLink();
    auto cut = deviceFrame(1, 0x40, 0, 0, std::vector<std::uint8_t>(11));
    cut.resize(15);
    m_peer.send(cut);
    ASSERT_TRUE(waitForSentinel());
    EXPECT_EQ(batches().size(), 1u);
    const auto lines = m_log.lines();
    const auto incomplete = std::find(
        lines.begin(), lines.end(),
        tztest::LogCapture::Line{2, "Incomplete protocol frame detected. Expected 20 bytes, but only 15 remain."});
    const auto leftover = std::find(
        lines.begin(), lines.end(),
        tztest::LogCapture::Line{2, "Leftover data at the end of UDP datagram after parsing. 15 bytes remaining."});
    ASSERT_NE(leftover, lines.end());
    EXPECT_LT(incomplete, leftover);
}

TEST_F(LinkReceive, ADatagramOfFiveBytesIsLeftover)
{
    connectLink();
    m_peer.send(bytesOf("55 AA 01 40 00"));
    ASSERT_TRUE(waitForSentinel());
    EXPECT_EQ(m_log.countContaining(2, ""), 1u);
    EXPECT_TRUE(m_log.has(2, "Leftover data at the end of UDP datagram after parsing. 5 bytes remaining."));
}

TEST_F(LinkReceive, AFrameAndFourZeroBytesGiveTheFrameAndLeftover)
{
    connectLink();
    std::atomic<bool> deliveredFirst{false};
    m_link.disconnect();
    m_link.setDataCallback([&](const auto &) {
        if (m_log.countContaining(2, "Leftover") == 0)
            deliveredFirst = true;
    });
    connectLink();
    m_peer.send(joined({frames(1), bytesOf("00 00 00 00")}));
    ASSERT_TRUE(waitForLine(2, "Leftover data at the end of UDP datagram after parsing. 4 bytes remaining."));
    EXPECT_TRUE(deliveredFirst);
    EXPECT_EQ(m_log.countContaining(2, ""), 1u);
    m_link.disconnect();
}

TEST_F(LinkReceive, HostSyncOrderIsJunk)
{
    connectLink();
    m_peer.send(bytesOf("AA 55 0F 60 00 00 01 00 01 00"));
    ASSERT_TRUE(waitForSentinel());
    EXPECT_EQ(batches().size(), 1u);
}

TEST_F(LinkReceive, UnknownProtocolsAndCommandsArePassedUpUnchanged)
{
    connectLink();
    m_peer.send(deviceFrame(0xC3, 0x99, 0xFE, 0x77, {1, 2, 3}));
    ASSERT_TRUE(tztest::waitFor([this] { return !batches().empty(); }));
    const TzVciProtocolData record = batches()[0][0];
    EXPECT_EQ(record.protocol, 0xC3);
    EXPECT_EQ(record.command, 0x99);
    EXPECT_EQ(record.channel, 0xFE);
    EXPECT_EQ(record.param, 0x77);
    EXPECT_EQ(record.length, 3);
}

TEST_F(LinkReceive, AWrongLengthDoesNoHarm)
{
    connectLink();
    m_peer.send(deviceFrame(1, 0x40, 0, 0, std::vector<std::uint8_t>(2000, 0xAB)));
    ASSERT_TRUE(tztest::waitFor([this] { return !batches().empty(); }));
    EXPECT_EQ(batches()[0][0].length, 2000);
    EXPECT_EQ(batches()[0][0].payloadLength(), 122u);
    ASSERT_TRUE(waitForSentinel());
}

TEST_F(LinkReceive, RandomDatagramsLeaveTheLinkAlive)
{
    connectLink();
    std::mt19937 random(77); // NOLINT(cert-msc51-cpp): the same bytes in every run
    std::uint64_t bytes = 0;
    for (int i = 0; i < 300; ++i) {
        std::vector<std::uint8_t> datagram(1 + random() % 1472);
        for (auto &byte : datagram)
            byte = static_cast<std::uint8_t>(random());
        bytes += datagram.size();
        m_peer.send(datagram);
        ASSERT_TRUE(waitForBytes(bytes)); // one at a time, so that none is lost
    }
    ASSERT_TRUE(waitForSentinel());
    EXPECT_EQ(m_link.bytesReceived(), bytes + 9);
    EXPECT_EQ(m_disconnects, 0);
}

TEST_F(LinkReceive, ADatagramBeyondTheBufferIsCut)
{
    connectLink();
    m_peer.send(std::vector<std::uint8_t>(9000, 0));
    ASSERT_TRUE(waitForSentinel());
    EXPECT_EQ(m_link.bytesReceived(), 8192u + 9u);
}

TEST_F(LinkReceive, AnEmptyDatagramEndsTheReceiveThread)
{
    connectLink();
    m_peer.send({});
    ASSERT_TRUE(waitForDisconnects(1));
    EXPECT_TRUE(m_log.has(1, connectedLine + m_peer.ip()));
    ASSERT_TRUE(
        tztest::waitFor([this] { return m_log.countContaining(1, "Stopped vci receive message thread(id: ") == 1; }));
    // Until somebody disconnects, the socket stays and sends go out.
    EXPECT_TRUE(m_link.isConnected());
    EXPECT_EQ(m_link.send(QByteArrayLiteral("x")), 0);
    m_peer.send(frames(1));
    m_link.disconnect();
    EXPECT_FALSE(m_link.isConnected());
    EXPECT_EQ(m_log.count(1, "Disconnected from server: " + m_peer.ip()), 1u);
    EXPECT_TRUE(batches().empty());
    EXPECT_EQ(m_disconnects, 1);
}

TEST_F(LinkReceive, WhatStandsBeforeAnEmptyDatagramIsDelivered)
{
    std::mutex gate;
    std::unique_lock held(gate);
    m_link.setDataCallback([&](const auto &batch) {
        const std::lock_guard wait(gate); // so that all that follows lies ready for one receive call
        const std::lock_guard lock(m_mutex);
        m_batches.push_back(batch);
    });
    connectLink();
    m_peer.send(frames(1));
    ASSERT_TRUE(waitForBytes(33));
    m_peer.send(frames(2));
    m_peer.send({});
    m_peer.send(frames(3));
    held.unlock();
    ASSERT_TRUE(waitForDisconnects(1));
    EXPECT_EQ(m_link.recordsReceived(), 3u);
    m_link.disconnect();
}

TEST_F(LinkReceive, CallbacksRunOnTheNamedReceiveThread)
{
    std::array<char, 16> name{};
    std::atomic<bool> done{false};
    m_link.setDataCallback([&](const auto &) {
        ::pthread_getname_np(::pthread_self(), name.data(), name.size());
        done = true;
    });
    connectLink();
    m_peer.send(frames(1));
    ASSERT_TRUE(tztest::waitFor([&] { return done.load(); }));
    EXPECT_STREQ(name.data(), "vci-rx-0");
    m_link.disconnect();
}

TEST_F(LinkReceive, EveryDatagramIsTraced)
{
    connectLink();
    m_peer.send(bytesOf("55 AA 01 20 00 00 00 00 00"));
    ASSERT_TRUE(waitForSentinel());
    EXPECT_TRUE(m_log.has(0, "0 SD: 68 65 6C 6C 6F"));
    EXPECT_TRUE(m_log.has(0, "0 RD: 55 AA 01 20 00 00 00 00 00"));
}

TEST_F(LinkReceive, WhatAStrangerSendsIsNotTaken)
{
    connectLink();
    tztest::PlainPeer stranger; // at the device's own address, on another port
    stranger.sendTo(m_peer.host(), frames(1));
    stranger.sendTo(m_peer.host(), {});
    ASSERT_TRUE(waitForSentinel());
    EXPECT_EQ(batches().size(), 1u);
    EXPECT_EQ(m_link.recordsReceived(), 1u);
    EXPECT_EQ(m_link.bytesReceived(), 9u);
    EXPECT_EQ(m_disconnects, 0);
}

namespace {

// The first datagram's callback is held while more arrives than the receive buffer takes.
class LinkOverload : public LinkReceive
{
protected:
    static constexpr int overload = 60'000;

    LinkOverload()
    {
        m_link.setDataCallback([this](const auto &) {
            const std::lock_guard wait(m_gate);
            ++m_delivered;
        });
    }
    ~LinkOverload() override
    {
        if (m_held.owns_lock()) // a failed assertion left it
            m_held.unlock();
        m_link.disconnect();
    }

    void send(int count)
    {
        const auto datagram = frames(1);
        for (int i = 0; i < count; ++i)
            m_peer.send(datagram);
    }
    // The sum of all warnings.
    int told() const
    {
        int sum = 0;
        for (const auto &line : m_log.lines()) {
            int count = 0;
            if (line.level == 2 && std::sscanf(line.text.c_str(), "Lost %d datagrams", &count) == 1)
                sum += count;
        }
        return sum;
    }

    std::mutex m_gate;
    std::unique_lock<std::mutex> m_held{m_gate};
    std::atomic<int> m_delivered{0};
};

} // namespace

// Every datagram is either delivered or told.
TEST_F(LinkOverload, WhatTheHostDropsIsTold)
{
    connectLink();
    send(overload);
    m_held.unlock();
    ASSERT_TRUE(tztest::waitFor([this] { return m_delivered + told() == overload; }));
    EXPECT_GT(told(), 0);
    EXPECT_LE(m_log.countContaining(2, "Lost "), 3u);
}

TEST_F(LinkOverload, WhatWasDroppedBehindABacklogIsToldWhenTheLinkIsEnded)
{
    connectLink();
    send(1);
    ASSERT_TRUE(waitForBytes(33));
    send(overload);
    std::thread ending([this] { m_link.disconnect(); });
    EXPECT_TRUE(tztest::waitFor([this] { return !m_link.isConnected(); }));
    EXPECT_EQ(told(), 0);
    m_held.unlock();
    ending.join();
    EXPECT_GT(told(), 0);
    EXPECT_LT(told(), overload);
    EXPECT_LT(m_delivered, overload); // the backlog itself was not read
}

TEST_F(LinkOverload, WhatWasDroppedBehindAnEmptyDatagramIsTold)
{
    connectLink();
    send(1);
    ASSERT_TRUE(waitForBytes(33));
    m_peer.send({});
    send(overload);
    m_held.unlock();
    ASSERT_TRUE(waitForDisconnects(1));
    EXPECT_EQ(m_delivered, 1);
    EXPECT_GT(told(), 0);
    EXPECT_LT(told(), overload);
}
