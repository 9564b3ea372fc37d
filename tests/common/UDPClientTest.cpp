// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/UDPClient.h"

#include "common/Log.h"
#include "common/platform/Socket.h"
#include "tests/support/LogCapture.h"
#include "tests/support/WaitFor.h"
#include "vci/TzVciNetwork.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

using Common::UDPClient;
using Common::platform::SharedSocket;
using namespace std::chrono_literals;

namespace {

std::vector<char> bytes(std::string_view text)
{
    return {text.begin(), text.end()};
}

std::string textOf(const UDPClient::DataBuffer &buffer)
{
    return {buffer.data.begin(), buffer.data.begin() + static_cast<std::ptrdiff_t>(buffer.size)};
}

/// A client on the test's loopback network, and a peer that talks to it.
class UDPClientTest : public testing::Test
{
protected:
    UDPClientTest()
    {
        peer = SharedSocket::openUdp();
        EXPECT_EQ(peer.bind(peerIp, 0), 0);
        EXPECT_EQ(peer.setReceiveTimeout(5000), 0);
        config.localIp = localIp;
    }

    /// Starts the client and tells its port by a first datagram to the peer.
    void startClient()
    {
        ASSERT_TRUE(client.start(config));
        ASSERT_TRUE(client.broadcast(bytes("hello"), peer.localPort(), peerIp));
        std::string sender;
        std::array<char, 64> datagram{};
        ASSERT_EQ(peer.receiveFrom(datagram, sender, clientPort).size, 5);
        EXPECT_EQ(sender, localIp);
    }
    void sendToClient(std::string_view text) { ASSERT_EQ(peer.sendTo(text, localIp, clientPort), 0); }
    UDPClient::DataBufferPtr fetch()
    {
        UDPClient::DataBufferPtr buffer;
        EXPECT_TRUE(tztest::waitFor([&] { return client.receive(buffer); }));
        return buffer;
    }

    const std::string localIp = TzVciNetwork::current().prefix + ".1";
    const std::string peerIp = TzVciNetwork::current().prefix + ".2";
    std::uint16_t clientPort = 0;
    SharedSocket peer;
    UDPClient::ConnectConfig config;
    UDPClient client;
};

} // namespace

TEST_F(UDPClientTest, SendsAndReceivesWithTheSendersAddress)
{
    startClient();
    sendToClient("reply");
    const auto buffer = fetch();
    ASSERT_TRUE(buffer);
    EXPECT_EQ(textOf(*buffer), "reply");
    EXPECT_EQ(buffer->address, peerIp);
}

TEST_F(UDPClientTest, ReceiveReturnsAtOnceWhenNothingWaits)
{
    startClient();
    UDPClient::DataBufferPtr buffer;
    EXPECT_FALSE(client.receive(buffer));
    EXPECT_FALSE(buffer);
}

TEST_F(UDPClientTest, DatagramsComeInTheirOrder)
{
    startClient();
    for (int i = 0; i < 40; ++i)
        sendToClient(std::to_string(i));
    for (int i = 0; i < 40; ++i) {
        const auto buffer = fetch();
        ASSERT_TRUE(buffer);
        EXPECT_EQ(textOf(*buffer), std::to_string(i));
    }
}

TEST_F(UDPClientTest, EmptyAndOverlongDatagramsAreLeftOut)
{
    startClient();
    sendToClient("");
    sendToClient(std::string(UDPClient::DataBuffer::capacity + 1, 'x'));
    sendToClient(std::string(UDPClient::DataBuffer::capacity, 'y'));
    const auto buffer = fetch();
    ASSERT_TRUE(buffer);
    EXPECT_EQ(textOf(*buffer), std::string(UDPClient::DataBuffer::capacity, 'y'));
}

TEST_F(UDPClientTest, EmptyPoolDropsWithACountedWarning)
{
    const tztest::LogCapture log;
    config.bufferCount = 2;
    startClient();
    for (int i = 0; i < 7; ++i)
        sendToClient(std::to_string(i));
    auto first = fetch();
    auto second = fetch();
    ASSERT_TRUE(first && second);
    EXPECT_EQ(textOf(*first), "0");
    EXPECT_EQ(textOf(*second), "1");
    // The first drop is told at once, the others within a second or at the end.
    EXPECT_TRUE(
        tztest::waitFor([&] { return log.countContaining(Common::LogLevel::warning, "datagrams dropped") > 0; }));
    first.reset();
    // Dropped ones are gone for good; what comes now finds the buffer that was given back.
    UDPClient::DataBufferPtr buffer;
    ASSERT_TRUE(tztest::waitFor([&] {
        sendToClient("later");
        return client.receive(buffer);
    }));
    client.stop();
    EXPECT_GE(log.countContaining(Common::LogLevel::warning, "all 2 buffers are in use"), 1U);
}

TEST_F(UDPClientTest, BuffersGoRoundWithoutEnd)
{
    config.bufferCount = 1;
    startClient();
    for (int i = 0; i < 200; ++i) {
        sendToClient(std::to_string(i));
        const auto buffer = fetch();
        ASSERT_TRUE(buffer);
        ASSERT_EQ(textOf(*buffer), std::to_string(i));
    }
}

TEST_F(UDPClientTest, NothingIsReceivedOrSentAfterStop)
{
    const tztest::LogCapture log;
    config.bufferCount = 1;
    startClient();
    sendToClient("waits"); // stop() must drop it
    sendToClient("too many");
    EXPECT_TRUE(tztest::waitFor( // which tells that the first one has arrived
        [&] { return log.countContaining(Common::LogLevel::warning, "datagrams dropped") > 0; }));
    client.stop();
    UDPClient::DataBufferPtr buffer;
    EXPECT_FALSE(client.receive(buffer));
    EXPECT_FALSE(client.broadcast(bytes("x"), 8080, peerIp));
    client.stop();
}

TEST_F(UDPClientTest, BufferOutlivesStopAndTheClient)
{
    UDPClient::DataBufferPtr buffer;
    {
        auto own = std::make_unique<UDPClient>();
        ASSERT_TRUE(own->start(config));
        ASSERT_TRUE(own->broadcast(bytes("hello"), peer.localPort(), peerIp));
        std::string sender;
        std::array<char, 64> datagram{};
        std::uint16_t port = 0;
        ASSERT_GT(peer.receiveFrom(datagram, sender, port).size, 0);
        ASSERT_EQ(peer.sendTo(bytes("kept"), localIp, port), 0);
        ASSERT_TRUE(tztest::waitFor([&] { return own->receive(buffer); }));
        own->stop();
        own.reset();
    }
    EXPECT_EQ(textOf(*buffer), "kept");
    buffer.reset();
}

TEST_F(UDPClientTest, CanBeStartedAgainButNotTwice)
{
    startClient();
    EXPECT_FALSE(client.start(config));
    client.stop();
    startClient();
    sendToClient("again");
    EXPECT_TRUE(fetch());
}

TEST_F(UDPClientTest, BroadcastsOnLoopback)
{
    ASSERT_TRUE(client.start(config));
    const auto listener = SharedSocket::openUdp();
    ASSERT_EQ(listener.bind("127.255.255.255", 0), 0);
    ASSERT_EQ(listener.setReceiveTimeout(5000), 0);
    ASSERT_TRUE(client.broadcast(bytes("all"), listener.localPort(), "127.255.255.255"));
    std::array<char, 16> datagram{};
    std::string sender;
    std::uint16_t port = 0;
    EXPECT_EQ(listener.receiveFrom(datagram, sender, port).size, 3);
    EXPECT_EQ(sender, localIp);
}

TEST_F(UDPClientTest, BroadcastIsRefusedWhereItWasNotEnabled)
{
    config.broadcastEnabled = false;
    ASSERT_TRUE(client.start(config));
    EXPECT_FALSE(client.broadcast(bytes("all"), 8080, "127.255.255.255"));
}

TEST_F(UDPClientTest, BadDestinationsAreRefused)
{
    startClient();
    EXPECT_FALSE(client.broadcast(bytes("x"), 0, peerIp));
    EXPECT_FALSE(client.broadcast(bytes("x"), 65536, peerIp));
    EXPECT_FALSE(client.broadcast(bytes("x"), -1, peerIp));
    EXPECT_FALSE(client.broadcast(bytes("x"), 8080, "nowhere"));
    EXPECT_FALSE(client.broadcast(bytes("x"), 8080, ""));
    EXPECT_FALSE(client.broadcast({}, 8080, peerIp));
}

TEST_F(UDPClientTest, StartFailsForAnAddressThatIsNotOurs)
{
    const tztest::LogCapture log;
    config.localIp = "192.0.2.1"; // reserved for documentation: no machine has it
    EXPECT_FALSE(client.start(config));
    EXPECT_EQ(log.countContaining(Common::LogLevel::warning, "UDP client: bind on 192.0.2.1:0 failed"), 1U);
    config.localIp = "not an address";
    EXPECT_FALSE(client.start(config));
    config.localIp = localIp;
    config.localPort = 70000;
    EXPECT_FALSE(client.start(config));
}

TEST_F(UDPClientTest, PortInUseIsRefusedUnlessBothShareIt)
{
    config.localPort = peer.localPort();
    config.localIp = peerIp;
    EXPECT_FALSE(client.start(config)); // the peer does not share

    const auto sharing = SharedSocket::openUdp();
    ASSERT_EQ(sharing.reuseAddress(), 0);
    ASSERT_EQ(sharing.bind(peerIp, 0), 0);
    config.localPort = sharing.localPort();
    EXPECT_TRUE(client.start(config));
}

TEST_F(UDPClientTest, RemoteAddressFiltersOthers)
{
    config.remoteIp = peerIp;
    config.remotePort = peer.localPort();
    startClient();
    const auto stranger = SharedSocket::openUdp();
    ASSERT_EQ(stranger.bind(TzVciNetwork::current().prefix + ".3", 0), 0);
    ASSERT_EQ(stranger.sendTo(bytes("stranger"), localIp, clientPort), 0);
    sendToClient("friend");
    const auto buffer = fetch();
    ASSERT_TRUE(buffer);
    EXPECT_EQ(textOf(*buffer), "friend");
}

TEST_F(UDPClientTest, StopWhileOtherThreadsUseIt)
{
    std::atomic<bool> done{false};
    std::thread user([&] {
        UDPClient::DataBufferPtr buffer;
        while (!done) {
            (void)client.receive(buffer);
            (void)client.broadcast(bytes("x"), 9, peerIp);
            buffer.reset();
        }
    });
    for (int round = 0; round < 30; ++round) {
        EXPECT_TRUE(client.start(config));
        client.stop();
    }
    done = true;
    user.join();
}
