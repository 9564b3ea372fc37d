// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/vci/DiscoveryResponder.h"

#include "tests/vci/BoundSocket.h"

#include <array>
#include <cstring>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tztest {

DiscoveryResponder::DiscoveryResponder(const TzVciNetwork &network, std::vector<Box> boxes)
    : m_network(network)
    , m_boxes(std::move(boxes))
    , m_socket(openBoundSocket(network.broadcast, network.discoveryPort))
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
        const std::size_t size = receiveFrom(m_socket, buffer, sender);
        if (size == 0)
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
            const int handle = openBoundSocket(m_network.deviceAddress(box.index), 0);
            ::sendto(handle, reply.data(), reply.size(), 0, reinterpret_cast<const sockaddr *>(&sender),
                     sizeof(sender));
            ::close(handle);
        }
        const std::lock_guard lock(m_mutex);
        m_requests.emplace_back(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(size));
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
