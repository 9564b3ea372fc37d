// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <netinet/in.h>

namespace tztest {

/// The other end of a link: a bare UDP socket at the address of device 0 of the test's network, on a port of its own.
class PlainPeer
{
public:
    /// @param port  0: the system's choice
    explicit PlainPeer(std::uint16_t port = 0);
    ~PlainPeer() { close(); }
    PlainPeer(const PlainPeer &) = delete;
    PlainPeer &operator=(const PlainPeer &) = delete;

    std::string ip() const;
    std::uint16_t port() const { return m_port; }
    /// Waits for a datagram, whose sender is the destination of send() from then on; nullopt when none comes in time.
    std::optional<std::vector<std::uint8_t>> receive(std::chrono::milliseconds limit = std::chrono::seconds(20));
    void send(const std::vector<std::uint8_t> &datagram);
    /// Sends to somebody who has not sent anything here.
    void sendTo(const sockaddr_in &host, const std::vector<std::uint8_t> &datagram);
    /// Where the last datagram came from.
    const sockaddr_in &host() const { return m_host; }
    std::string hostIp() const; ///< dotted
    /// From now on the system answers "port unreachable".
    void close();

private:
    int m_socket = -1;
    std::uint16_t m_port = 0;
    sockaddr_in m_host{};
};

} // namespace tztest
