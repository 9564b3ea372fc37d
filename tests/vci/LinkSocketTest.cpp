// SPDX-License-Identifier: GPL-3.0-or-later
// What a link asks of its socket.
#include "common/Utils.h"
#include "common/platform/SocketOptions.h"
#include "tests/vci/LinkFixture.h"
#include "tests/vci/OnLogLine.h"
#include "tests/vci/WireFrames.h"
#include "vci/TzVciNetwork.h"

#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <filesystem>
#include <net/if.h>
#include <netinet/in.h>
#include <string>
#include <sys/socket.h>

using Common::Utils;
using tztest::deviceFrame;

namespace {

using LinkSocket = tztest::LinkFixture;

sockaddr_in boundAddress(int descriptor)
{
    sockaddr_in address{};
    socklen_t size = sizeof(address);
    if (::getsockname(descriptor, reinterpret_cast<sockaddr *>(&address), &size) != 0 || address.sin_family != AF_INET)
        return {};
    return address;
}

// The descriptor of this process's socket that is bound to the address, -1 without one.
int descriptorBoundTo(const std::string &ip)
{
    in_addr wanted{};
    ::inet_pton(AF_INET, ip.c_str(), &wanted);
    for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        const int descriptor = std::stoi(entry.path().filename());
        const sockaddr_in address = boundAddress(descriptor);
        if (address.sin_port != 0 && address.sin_addr.s_addr == wanted.s_addr)
            return descriptor;
    }
    return -1;
}

std::string interfaceOf(int descriptor)
{
    std::array<char, IFNAMSIZ> name{};
    socklen_t size = name.size();
    return ::getsockopt(descriptor, SOL_SOCKET, SO_BINDTODEVICE, name.data(), &size) == 0 ? name.data() : "error";
}

} // namespace

TEST_F(LinkSocket, IsBoundToTheInterfaceOfItsLocalIp)
{
    auto withLocalIp = config();
    withLocalIp.localIp = "127.0.0.1"; // the one loopback address that the interface lists
    connectLink(withLocalIp);
    EXPECT_EQ(interfaceOf(descriptorBoundTo(withLocalIp.localIp)), "lo");
    EXPECT_EQ(m_log.countContaining(0, "Failed to bind to the interface"), 0u);
}

TEST_F(LinkSocket, AnInterfaceThatIsNotFoundIsADebugLineAlone)
{
    auto withLocalIp = config();
    withLocalIp.localIp = TzVciNetwork::current().prefix + ".1"; // no interface lists it
    connectLink(withLocalIp);
    EXPECT_EQ(interfaceOf(descriptorBoundTo(withLocalIp.localIp)), "");
    EXPECT_EQ(m_log.count(0, "Failed to bind to the interface of local IP: " + withLocalIp.localIp +
                                 ". Error: " + std::to_string(ENODEV)),
              1u);
    EXPECT_EQ(m_log.countContaining(2, "") + m_log.countContaining(3, ""), 0u);
}

TEST_F(LinkSocket, AsksForItsBuffersBeforeTheirSizesAreLogged)
{
    const auto plain = Common::platform::SharedSocket::openUdp();
    const int sendDefault = Utils::getSocketSendBufferSize(plain.descriptor());
    const int receiveDefault = Utils::getSocketReceiveBufferSize(plain.descriptor());
    ASSERT_NE(Utils::setSocketSendBufferSize(plain.descriptor(), 1024), 0);
    ASSERT_EQ(plain.setReceiveBufferSize(8 * 1024 * 1024), 0);
    const int sendBytes = Utils::getSocketSendBufferSize(plain.descriptor());
    const int receiveBytes = Utils::getSocketReceiveBufferSize(plain.descriptor());
    ASSERT_NE(sendBytes, sendDefault); // else nothing could be seen here
    ASSERT_NE(receiveBytes, receiveDefault);
    ASSERT_TRUE(m_link.connect(config()));
    EXPECT_TRUE(m_log.has(1, "Current network card send and receive buffer: " + std::to_string(sendBytes) + '/' +
                                 std::to_string(receiveBytes)));
}

// A socket that is bound and not yet connected takes datagrams of anybody.
TEST_F(LinkSocket, WhatAStrangerSentBeforeTheConnectionIsThrownAway)
{
    auto withLocalIp = config();
    withLocalIp.localIp = TzVciNetwork::current().prefix + ".1";
    tztest::PlainPeer stranger;
    bool sent = false;
    const tztest::OnLogLine bound("Bind to local IP: ", [&] {
        const int descriptor = descriptorBoundTo(withLocalIp.localIp);
        if (descriptor < 0)
            return;
        stranger.sendTo(boundAddress(descriptor), deviceFrame(1, 0x40, 7, 0, {}));
        stranger.sendTo(boundAddress(descriptor), {}); // would end the link
        sent = true;
    });
    connectLink(withLocalIp);
    ASSERT_TRUE(sent);
    m_peer.send(deviceFrame(1, 0x40, 0, 0, {}));
    ASSERT_TRUE(tztest::waitFor([this] { return !batches().empty(); }));
    EXPECT_EQ(batches()[0][0].channel, 0);
    EXPECT_EQ(m_link.recordsReceived(), 1u);
    EXPECT_EQ(m_disconnects, 0);
}
