// SPDX-License-Identifier: GPL-3.0-or-later
// What a link sends, and that its steady state allocates nothing.
#include "tests/support/AllocationCounter.h"
#include "tests/vci/Hex.h"
#include "tests/vci/LinkFixture.h"
#include "tests/vci/WireFrames.h"
#include "vci/TzVciTypes.h"

#include <chrono>
#include <thread>

using namespace std::chrono_literals;

using tztest::deviceFrame;

namespace {

using LinkSend = tztest::LinkFixture;

} // namespace

TEST_F(LinkSend, WithoutASocketItIsRefused)
{
    EXPECT_EQ(m_link.send(std::vector<char>{1, 2, 3}, 1), TzVciResult::invalidSend);
    EXPECT_EQ(m_link.send(QByteArrayLiteral("abc")), -103);
    EXPECT_EQ(m_log.count(3, "Failed to send data: invalid socket or data"), 2u);
}

TEST_F(LinkSend, NothingToSendIsRefused)
{
    connectLink();
    EXPECT_EQ(m_link.send(std::vector<char>{}, 1), -103);
    EXPECT_EQ(m_link.send(QByteArray()), -103);
    EXPECT_EQ(m_log.count(3, "Failed to send data: invalid socket or data"), 2u);
    EXPECT_EQ(m_link.framesSent(), 1u); // the greeting of the fixture
}

TEST_F(LinkSend, CountsFramesAndBytes)
{
    ASSERT_TRUE(m_link.connect(config()));
    ASSERT_EQ(m_link.send(std::vector<char>{1, 2, 3}, 44), 0);
    EXPECT_EQ(m_link.framesSent(), 44u);
    EXPECT_EQ(m_link.bytesSent(), 3u);
    ASSERT_EQ(m_link.send(QByteArrayLiteral("ab")), 0);
    EXPECT_EQ(m_link.framesSent(), 45u);
    EXPECT_EQ(m_link.bytesSent(), 5u);
    EXPECT_EQ(tztest::hexOf(m_peer.receive().value()), "01 02 03");
    EXPECT_EQ(tztest::hexOf(m_peer.receive().value()), "61 62");
}

TEST_F(LinkSend, ADatagramTheSystemRefusesIsAnError)
{
    connectLink();
    EXPECT_EQ(m_link.send(std::vector<char>(70'000), 1), TzVciResult::sendFailed);
    EXPECT_TRUE(m_log.has(3, "Failed to send data. Error: " + std::to_string(EMSGSIZE)));
    EXPECT_EQ(m_link.framesSent(), 1u);
    EXPECT_EQ(m_link.bytesSent(), 5u);
}

TEST_F(LinkSend, AnIdleLinkSendsTheHeartbeat)
{
    const auto start = std::chrono::steady_clock::now();
    ASSERT_TRUE(m_link.connect(config()));
    EXPECT_EQ(tztest::hexOf(m_peer.receive().value()), "FF");
    EXPECT_GE(std::chrono::steady_clock::now() - start, 2s);
    ASSERT_TRUE(tztest::waitFor([this] { return m_link.bytesSent() == 1; }));
    EXPECT_EQ(m_link.framesSent(), 0u);
    EXPECT_TRUE(waitForLine(0, "0 SD: FF"));
}

TEST_F(LinkSend, ALinkThatSendsInTimeSendsNoHeartbeat)
{
    ASSERT_TRUE(m_link.connect(config()));
    for (int i = 0; i < 7; ++i) {
        ASSERT_EQ(m_link.send(QByteArrayLiteral("x")), 0);
        EXPECT_EQ(tztest::hexOf(m_peer.receive().value()), "78");
        EXPECT_FALSE(m_peer.receive(500ms).has_value());
    }
    EXPECT_EQ(m_link.bytesSent(), 7u);
}

TEST_F(LinkSend, AnyThreadMaySendWhileTheLinkComesAndGoes)
{
    m_log.clear();
    std::atomic<bool> stop{false};
    std::vector<std::thread> senders;
    for (int i = 0; i < 2; ++i) {
        senders.emplace_back([&] {
            const std::vector<char> bytes(9, 'x');
            while (!stop) {
                const int result = m_link.send(bytes, 1);
                EXPECT_TRUE(result == 0 || result == TzVciResult::invalidSend || result == TzVciResult::sendFailed);
                std::this_thread::yield();
            }
        });
    }
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(m_link.connect(config()));
        m_link.disconnect();
    }
    stop = true;
    for (std::thread &sender : senders)
        sender.join();
}

namespace {

// Not LinkFixture: while a log sink exists every datagram is traced, which allocates.
class LinkSteadyState : public testing::Test
{
protected:
    tztest::PlainPeer m_peer;
    std::atomic<std::uint64_t> m_records{0};
    std::atomic<std::size_t> m_allocations{0}; // of the receive thread, as it was at the latest batch
    TzVciCommunication m_link{0};
};

} // namespace

TEST_F(LinkSteadyState, AllocatesNothingForADatagram)
{
    m_link.setDataCallback([this](const auto &batch) {
        m_allocations = tztest::allocationsOfThisThread();
        m_records += batch.size();
    });
    TzVciCommunication::ConnectConfig config;
    config.serverIp = m_peer.ip();
    config.serverPort = m_peer.port();
    ASSERT_TRUE(m_link.connect(config));
    ASSERT_EQ(m_link.send(QByteArrayLiteral("hello")), 0);
    ASSERT_TRUE(m_peer.receive().has_value());

    std::vector<std::uint8_t> datagram;
    for (int i = 0; i < 44; ++i) {
        const auto frame = deviceFrame(1, 0x40, 0, 0, std::vector<std::uint8_t>(24));
        datagram.insert(datagram.end(), frame.begin(), frame.end());
    }
    m_peer.send(datagram);
    ASSERT_TRUE(tztest::waitFor([this] { return m_records == 44; }));
    const std::size_t before = m_allocations;
    ASSERT_GT(before, 0u); // the counter works: starting the thread did allocate
    for (int i = 0; i < 200; ++i)
        m_peer.send(datagram);
    ASSERT_TRUE(tztest::waitFor([this] { return m_records == 44 * 201; }));
    EXPECT_EQ(m_allocations, before);
    m_link.disconnect();
}

TEST_F(LinkSteadyState, AllocatesNothingForASend)
{
    TzVciCommunication::ConnectConfig config;
    config.serverIp = m_peer.ip();
    config.serverPort = m_peer.port();
    ASSERT_TRUE(m_link.connect(config));
    const std::vector<char> bytes(33, 'x');
    const std::size_t before = tztest::allocationsOfThisThread();
    for (int i = 0; i < 100; ++i)
        ASSERT_EQ(m_link.send(bytes, 1), 0);
    EXPECT_EQ(tztest::allocationsOfThisThread(), before);
}
