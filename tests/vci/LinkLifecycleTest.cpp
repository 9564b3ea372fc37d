// SPDX-License-Identifier: GPL-3.0-or-later
// How a link begins, ends and fails.
#include "common/EmergencyStop.h"
#include "tests/support/NoMoreThreads.h"
#include "tests/vci/Hex.h"
#include "tests/vci/LinkFixture.h"
#include "tests/vci/OnLogLine.h"
#include "tests/vci/WireFrames.h"
#include "vci/TzVciNetwork.h"
#include "vci/TzVciProtocol.h"
#include "vci/TzVciTypes.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <future>
#include <sys/resource.h>
#include <thread>

using tztest::deviceFrame;

namespace {

class LinkLifecycle : public tztest::LinkFixture
{
protected:
    std::string line(const char *text) const { return text + m_peer.ip(); }
    static void armChannel(int slot)
    {
        const QByteArray close = encodeProtocolData(makeCloseChannel(TzVciProtocolId::can, 2));
        Common::EmergencyStop::arm(slot, TzVciProtocolId::can, 2,
                                   {close.constData(), static_cast<std::size_t>(close.size())});
    }
    // The armed datagram reaches the peer, and the end of the link gives the slot back.
    void expectEmergencyStop(tztest::PlainPeer &peer)
    {
        Common::EmergencyStop::fire();
        const auto datagram = peer.receive();
        EXPECT_EQ(tztest::hexOf(datagram.value_or(std::vector<std::uint8_t>())), "AA 55 01 20 02 00 00 00 00");
        m_link.disconnect();
        EXPECT_EQ(m_link.emergencySlot(), -1);
        Common::EmergencyStop::reset();
    }
};

// While it lives the process can open no further file or socket.
class NoMoreDescriptors
{
public:
    NoMoreDescriptors()
    {
        ::getrlimit(RLIMIT_NOFILE, &m_before);
        rlimit none = m_before;
        none.rlim_cur = 0;
        ::setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoMoreDescriptors() { ::setrlimit(RLIMIT_NOFILE, &m_before); }

private:
    rlimit m_before{};
};

bool hasThread(const std::string &name)
{
    for (const auto &task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::string read;
        if (std::getline(std::ifstream(task.path() / "comm"), read) && read == name)
            return true;
    }
    return false;
}

} // namespace

TEST_F(LinkLifecycle, ConnectTellsWhatItDoes)
{
    EXPECT_FALSE(m_link.isConnected());
    ASSERT_TRUE(m_link.connect(config()));
    EXPECT_TRUE(m_link.isConnected());
    EXPECT_TRUE(m_log.has(1, line("Connected to server: ")));
    EXPECT_EQ(m_log.countContaining(1, "Current network card send and receive buffer: "), 1u);
    EXPECT_EQ(m_log.countContaining(1, "Bind to local IP"), 0u);
    ASSERT_TRUE(
        tztest::waitFor([this] { return m_log.countContaining(1, "Start vci receive message thread(id: ") == 1; }));
    m_link.disconnect();
    EXPECT_EQ(m_log.countContaining(1, "Stopped vci receive message thread(id: "), 1u);
    EXPECT_EQ(m_disconnects, 0); // this end was asked for
    EXPECT_EQ(m_log.countContaining(1, "Connection closed"), 0u);
    EXPECT_EQ(m_log.countContaining(2, "") + m_log.countContaining(3, ""), 0u);
}

TEST_F(LinkLifecycle, DisconnectTwiceLogsOneLine)
{
    connectLink();
    m_link.disconnect();
    m_link.disconnect();
    EXPECT_EQ(m_log.count(1, line("Disconnected from server: ")), 1u);
}

TEST_F(LinkLifecycle, DisconnectWithoutAConnectionIsSilent)
{
    m_link.disconnect();
    EXPECT_TRUE(m_log.lines().empty());
}

TEST_F(LinkLifecycle, ConnectingAgainEndsTheFirstLinkAndResetsTheCounters)
{
    connectLink();
    m_peer.send(deviceFrame(1, 0x40, 0, 0, {}));
    ASSERT_TRUE(waitForBytes(9));
    EXPECT_EQ(m_link.framesSent(), 1u);
    ASSERT_TRUE(m_link.connect(config()));
    EXPECT_EQ(m_log.count(1, line("Disconnected from server: ")), 1u);
    EXPECT_EQ(m_log.count(1, line("Connected to server: ")), 2u);
    EXPECT_EQ(m_link.framesSent(), 0u);
    EXPECT_EQ(m_link.bytesSent(), 0u);
    EXPECT_EQ(m_link.recordsReceived(), 0u);
    EXPECT_EQ(m_link.bytesReceived(), 0u);
    greet();
    m_peer.send(deviceFrame(1, 0x40, 0, 0, {}));
    ASSERT_TRUE(waitForBytes(9));
}

TEST_F(LinkLifecycle, ALocalIpIsTheSourceOfWhatIsSent)
{
    auto withLocalIp = config();
    withLocalIp.localIp = TzVciNetwork::current().prefix + ".1";
    connectLink(withLocalIp);
    EXPECT_EQ(m_peer.hostIp(), withLocalIp.localIp);
    EXPECT_TRUE(m_log.has(1, "Bind to local IP: " + withLocalIp.localIp));
    m_peer.send(deviceFrame(1, 0x40, 0, 0, {}));
    ASSERT_TRUE(waitForBytes(9));
}

TEST_F(LinkLifecycle, ALocalIpOfNoInterfaceFails)
{
    auto wrong = config();
    wrong.localIp = "203.0.113.7"; // reserved for documentation
    EXPECT_FALSE(m_link.connect(wrong));
    EXPECT_FALSE(m_link.isConnected());
    EXPECT_TRUE(m_log.has(3, "Failed to bind to local IP: 203.0.113.7. Error: " + std::to_string(EADDRNOTAVAIL)));
    EXPECT_EQ(m_log.countContaining(1, ""), 0u);
}

TEST_F(LinkLifecycle, ALocalIpThatIsNoAddressFails)
{
    auto wrong = config();
    wrong.localIp = "nonsense";
    EXPECT_FALSE(m_link.connect(wrong));
    EXPECT_TRUE(m_log.has(3, "Failed to bind to local IP: nonsense. Error: " + std::to_string(EINVAL)));
}

TEST_F(LinkLifecycle, AServerIpThatIsNoAddressFails)
{
    for (const char *ip : {"nonsense", "", "1.2.3"}) {
        m_log.clear();
        auto wrong = config();
        wrong.serverIp = ip;
        EXPECT_FALSE(m_link.connect(wrong));
        EXPECT_FALSE(m_link.isConnected());
        EXPECT_TRUE(
            m_log.has(3, std::string("Failed to connect to server IP: ") + ip + ". Error: " + std::to_string(EINVAL)));
    }
}

TEST_F(LinkLifecycle, NoSocketLeftFails)
{
    {
        const NoMoreDescriptors none;
        EXPECT_FALSE(m_link.connect(config()));
    }
    EXPECT_FALSE(m_link.isConnected());
    EXPECT_TRUE(m_log.has(3, "Failed to create socket. Error: " + std::to_string(EMFILE)));
    connectLink(); // and the link is none the worse
}

TEST_F(LinkLifecycle, NoThreadLeftClosesTheSocketAgain)
{
    {
        const tztest::NoMoreThreads none;
        EXPECT_FALSE(m_link.connect(config()));
    }
    EXPECT_EQ(m_log.countContaining(3, "Failed to start read thread: "), 1u);
    EXPECT_FALSE(m_link.isConnected());
    EXPECT_EQ(m_link.emergencySlot(), -1);
    EXPECT_EQ(m_log.countContaining(1, "Connected to server"), 0u);
    EXPECT_EQ(m_link.send(QByteArrayLiteral("x")), TzVciResult::invalidSend);
    connectLink();
}

TEST_F(LinkLifecycle, CallbacksAreFixedWhileASocketExists)
{
    std::atomic<int> others{0};
    connectLink();
    m_link.setDataCallback([&](const auto &) { ++others; });
    m_link.setDisconnectCallback([&] { ++others; });
    m_peer.send(deviceFrame(1, 0x40, 0, 0, {}));
    ASSERT_TRUE(tztest::waitFor([this] { return batches().size() == 1; }));
    m_peer.send({});
    ASSERT_TRUE(waitForDisconnects(1));
    EXPECT_EQ(others, 0);
    m_link.disconnect();
    m_link.setDataCallback([&](const auto &) { ++others; });
    connectLink();
    m_peer.send(deviceFrame(1, 0x40, 0, 0, {}));
    ASSERT_TRUE(tztest::waitFor([&] { return others == 1; }));
    m_link.disconnect();
}

TEST_F(LinkLifecycle, WithoutCallbacksALinkJustCounts)
{
    TzVciCommunication bare(1);
    ASSERT_TRUE(bare.connect(config()));
    ASSERT_EQ(bare.send(QByteArrayLiteral("hello")), 0);
    ASSERT_TRUE(m_peer.receive().has_value());
    m_peer.send(deviceFrame(1, 0x40, 0, 0, {}));
    ASSERT_TRUE(tztest::waitFor([&] { return bare.recordsReceived() == 1; }));
    m_peer.send({});
    ASSERT_TRUE(tztest::waitFor([&] { return m_log.countContaining(1, "Stopped vci") == 1; }));
}

TEST_F(LinkLifecycle, AReadErrorEndsTheLinkAndTellsItsOwner)
{
    connectLink();
    m_peer.close();
    ASSERT_EQ(m_link.send(QByteArrayLiteral("x")), 0); // answered by "port unreachable"
    ASSERT_TRUE(waitForDisconnects(1));
    EXPECT_TRUE(m_log.has(3, "Failed to read data. Error: " + std::to_string(ECONNREFUSED)));
    EXPECT_TRUE(m_link.isConnected());
    m_link.disconnect();
    EXPECT_EQ(m_log.count(1, line("Disconnected from server: ")), 1u);
    EXPECT_EQ(m_disconnects, 1);
}

TEST_F(LinkLifecycle, AutoReconnectGoesOnWithANewSocket)
{
    auto again = config();
    again.autoReconnect = true;
    connectLink(again);
    m_peer.close();
    ASSERT_EQ(m_link.send(QByteArrayLiteral("x")), 0);
    ASSERT_TRUE(waitForLine(1, line("Reconnected to server: ")));
    EXPECT_TRUE(m_log.has(3, "Failed to read data. Error: " + std::to_string(ECONNREFUSED)));
    EXPECT_EQ(m_log.count(1, line("Disconnected from server: ")), 1u);

    tztest::PlainPeer returned(m_peer.port());
    ASSERT_EQ(m_link.send(QByteArrayLiteral("y")), 0);
    ASSERT_TRUE(returned.receive().has_value());
    returned.send(deviceFrame(1, 0x40, 0, 0, {}));
    ASSERT_TRUE(tztest::waitFor([this] { return batches().size() == 1; }));
    EXPECT_EQ(m_disconnects, 0);

    m_link.disconnect(); // wakes the thread, whose new socket has no receive time-out
    EXPECT_EQ(m_log.count(1, line("Disconnected from server: ")), 2u);
    EXPECT_EQ(m_disconnects, 0);
}

TEST_F(LinkLifecycle, AReconnectionKeepsTheArmedChannels)
{
    auto again = config();
    again.autoReconnect = true;
    connectLink(again);
    const int slot = m_link.emergencySlot();
    armChannel(slot);
    m_peer.close();
    ASSERT_EQ(m_link.send(QByteArrayLiteral("x")), 0);
    ASSERT_TRUE(waitForLine(1, line("Reconnected to server: ")));
    EXPECT_EQ(m_link.emergencySlot(), slot);

    tztest::PlainPeer returned(m_peer.port());
    expectEmergencyStop(returned);
}

// The reconnecting thread is held with its new socket in hand while the link is ended.
TEST_F(LinkLifecycle, ASocketThatAReconnectionPutsInWhileTheLinkEndsIsClosedWithItsLine)
{
    auto again = config();
    again.autoReconnect = true;
    connectLink(again);
    std::promise<void> reached;
    std::promise<void> released;
    const tztest::OnLogLine hold("Current network card", [&] {
        reached.set_value();
        released.get_future().wait();
    });
    m_peer.close();
    ASSERT_EQ(m_link.send(QByteArrayLiteral("x")), 0);
    reached.get_future().wait();
    std::thread ending([this] { m_link.disconnect(); });
    // The heartbeat's thread ends just before disconnect() looks for a socket, and finds none.
    EXPECT_TRUE(tztest::waitFor([] { return !hasThread("vci-hb-0"); }));
    released.set_value();
    ending.join();
    EXPECT_FALSE(m_link.isConnected());
    EXPECT_EQ(m_log.count(1, line("Reconnected to server: ")), 1u);
    EXPECT_EQ(m_log.count(1, line("Disconnected from server: ")), 2u);
    EXPECT_EQ(m_disconnects, 0);
}

TEST_F(LinkLifecycle, AReconnectionThatFailsEndsTheLink)
{
    auto again = config();
    again.autoReconnect = true;
    connectLink(again);
    {
        const NoMoreDescriptors none;
        m_peer.close();
        ASSERT_EQ(m_link.send(QByteArrayLiteral("x")), 0);
        ASSERT_TRUE(waitForDisconnects(1));
    }
    EXPECT_TRUE(m_log.has(3, "Failed to create socket. Error: " + std::to_string(EMFILE)));
    EXPECT_TRUE(m_log.has(3, line("Failed to reconnect to server: ")));
    EXPECT_FALSE(m_link.isConnected());
    EXPECT_EQ(m_link.send(QByteArrayLiteral("x")), TzVciResult::invalidSend);
    m_link.disconnect();
}

TEST_F(LinkLifecycle, ALinkMayBeEndedFromItsOwnCallbackButNotBegun)
{
    std::atomic<bool> refused{false};
    m_link.setDisconnectCallback([&] {
        m_link.disconnect();
        refused = !m_link.connect(config());
        ++m_disconnects;
    });
    connectLink();
    m_peer.send({});
    ASSERT_TRUE(waitForDisconnects(1));
    EXPECT_TRUE(refused);
    EXPECT_FALSE(m_link.isConnected());
    connectLink(); // joins the thread of the first link
    m_link.disconnect();
    m_link.setDisconnectCallback({});
    EXPECT_EQ(m_log.count(1, line("Disconnected from server: ")), 2u);
}

TEST_F(LinkLifecycle, TheSocketIsRegisteredForTheEmergencyStop)
{
    EXPECT_EQ(m_link.emergencySlot(), -1);
    connectLink();
    const int slot = m_link.emergencySlot();
    ASSERT_GE(slot, 0);
    armChannel(slot);
    expectEmergencyStop(m_peer);
}

TEST_F(LinkLifecycle, DestructionEndsTheLink)
{
    {
        TzVciCommunication brief(15);
        ASSERT_TRUE(brief.connect(config()));
    }
    EXPECT_EQ(m_log.count(1, line("Disconnected from server: ")), 1u);
    EXPECT_EQ(m_log.countContaining(1, "Stopped vci receive message thread"), 1u);
}
