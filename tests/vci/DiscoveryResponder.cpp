// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/vci/DiscoveryResponder.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tztest {

namespace {

int boundSocket(const std::string &ip, std::uint16_t port)
{
    const int handle = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const timeval timeout{0, 10'000};
    ::setsockopt(handle, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof(timeout));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    ::inet_pton(AF_INET, ip.c_str(), &address.sin_addr);
    if (::bind(handle, reinterpret_cast<const sockaddr *>(&address), sizeof(address)) != 0)
        ADD_FAILURE() << "no socket at " << ip << ":" << port << ": " << std::strerror(errno);
    return handle;
}

} // namespace

DiscoveryResponder::DiscoveryResponder(const TzVciNetwork &network, std::vector<Box> boxes)
    : m_network(network)
    , m_boxes(std::move(boxes))
    , m_socket(boundSocket(network.broadcast, network.discoveryPort))
    , m_thread([this] { run(); })
{
}

DiscoveryResponder::~DiscoveryResponder()
{
    m_stopping = true;
    m_thread.join();
    ::close(m_socket);
}

void DiscoveryResponder::run()
{
    std::array<std::uint8_t, 2048> buffer{};
    while (!m_stopping) {
        sockaddr_in sender{};
        socklen_t senderSize = sizeof(sender);
        const ssize_t size =
            ::recvfrom(m_socket, buffer.data(), buffer.size(), 0, reinterpret_cast<sockaddr *>(&sender), &senderSize);
        if (size <= 0)
            continue;
        for (const Box &box : m_boxes) {
            const std::array<std::uint8_t, 19> reply{0xAA,
                                                     0x55,
                                                     0,
                                                     0xFF,
                                                     0,
                                                     0,
                                                     10,
                                                     0,
                                                     2,
                                                     0,
                                                     1,
                                                     0,
                                                     static_cast<std::uint8_t>(box.canChannels),
                                                     static_cast<std::uint8_t>(box.canChannels >> 8),
                                                     5,
                                                     0,
                                                     static_cast<std::uint8_t>(box.linChannels),
                                                     static_cast<std::uint8_t>(box.linChannels >> 8),
                                                     0xFF};
            const int handle = boundSocket(m_network.deviceAddress(box.index), 0);
            ::sendto(handle, reply.data(), reply.size(), 0, reinterpret_cast<const sockaddr *>(&sender), senderSize);
            ::close(handle);
        }
        const std::lock_guard lock(m_mutex);
        m_requests.emplace_back(buffer.begin(), buffer.begin() + size);
    }
}

std::vector<std::vector<std::uint8_t>> DiscoveryResponder::requests() const
{
    const std::lock_guard lock(m_mutex);
    return m_requests;
}

TzVciNetwork DiscoveryResponder::uniqueNetwork()
{
    TzVciNetwork network = TzVciNetwork::current();
    // Below the ports that the system hands out by itself.
    network.discoveryPort = static_cast<std::uint16_t>(10'000 + ::getpid() % 20'000);
    return network;
}

} // namespace tztest
