// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/vci/PlainPeer.h"

#include "tests/vci/BoundSocket.h"
#include "vci/TzVciNetwork.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <array>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tztest {

namespace {

std::string dotted(const sockaddr_in &address)
{
    std::array<char, INET_ADDRSTRLEN> text{};
    return ::inet_ntop(AF_INET, &address.sin_addr, text.data(), text.size());
}

} // namespace

PlainPeer::PlainPeer(std::uint16_t port)
    : m_socket(openBoundSocket(ip(), port))
{
    sockaddr_in address{};
    socklen_t size = sizeof(address);
    EXPECT_EQ(::getsockname(m_socket, reinterpret_cast<sockaddr *>(&address), &size), 0);
    m_port = ntohs(address.sin_port);
}

std::string PlainPeer::ip() const
{
    return TzVciNetwork::current().deviceAddress(0);
}

std::optional<std::vector<std::uint8_t>> PlainPeer::receive(std::chrono::milliseconds limit)
{
    pollfd waiting{m_socket, POLLIN, 0};
    if (::poll(&waiting, 1, static_cast<int>(limit.count())) != 1)
        return std::nullopt;
    std::vector<std::uint8_t> datagram(8192);
    socklen_t size = sizeof(m_host);
    const ssize_t received =
        ::recvfrom(m_socket, datagram.data(), datagram.size(), 0, reinterpret_cast<sockaddr *>(&m_host), &size);
    if (received < 0)
        return std::nullopt;
    datagram.resize(static_cast<std::size_t>(received));
    return datagram;
}

void PlainPeer::send(const std::vector<std::uint8_t> &datagram)
{
    sendTo(m_host, datagram);
}

void PlainPeer::sendTo(const sockaddr_in &host, const std::vector<std::uint8_t> &datagram)
{
    const ssize_t sent = ::sendto(m_socket, datagram.data(), datagram.size(), 0,
                                  reinterpret_cast<const sockaddr *>(&host), sizeof(host));
    ASSERT_EQ(sent, static_cast<ssize_t>(datagram.size()));
}

std::string PlainPeer::hostIp() const
{
    return dotted(m_host);
}

void PlainPeer::close()
{
    if (m_socket >= 0)
        ::close(m_socket);
    m_socket = -1;
}

} // namespace tztest
