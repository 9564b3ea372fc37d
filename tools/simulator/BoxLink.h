// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/simulator/DatagramPacker.h"
#include "tools/simulator/Options.h"
#include "tools/simulator/UniqueFd.h"

#include <cstdint>
#include <netinet/in.h>
#include <optional>
#include <span>
#include <string>

namespace tzsim {

/// The sockets of a box: one on the box port, one on the discovery port, both at the box's own address, and the host
/// that it talks to. Not thread-safe: the owner serialises the calls; other threads may poll the descriptors.
class BoxLink
{
public:
    /// What went out since open() was first called.
    struct Totals
    {
        std::uint64_t datagrams = 0;
        std::uint64_t bytes = 0;
        std::uint64_t errors = 0; ///< datagrams that the socket refused
    };

    /// Binds both sockets; false with a text in @p error, and both closed.
    bool open(const Options &options, int index, std::string &error);
    void close(); ///< forgets the host too
    bool isOpen() const { return m_socket.get() >= 0; }
    int socket() const { return m_socket.get(); }
    int discoverySocket() const { return m_discovery.get(); }

    const std::optional<sockaddr_in> &host() const { return m_host; }
    /// True when it is another host, or the same one with a new socket.
    bool setHost(const sockaddr_in &host);
    bool isHost(const sockaddr_in &address) const;

    /// One datagram; false when the socket is closed or refuses it.
    bool sendTo(const sockaddr_in &to, std::span<const std::uint8_t> bytes);
    bool sendToHost(std::span<const std::uint8_t> bytes) { return m_host && sendTo(*m_host, bytes); }
    /// From the discovery port; not counted in the totals, which are those of the box port.
    bool sendDiscoveryReply(const sockaddr_in &to, std::span<const std::uint8_t> bytes);
    /// Sends all datagrams of the packer to the host and empties it.
    void sendToHost(DatagramPacker &packer);

    Totals totals;

private:
    UniqueFd m_socket;
    UniqueFd m_discovery;
    std::optional<sockaddr_in> m_host;
};

/// A UDP socket bound to an address; invalid with a text in @p error.
UniqueFd bindUdp(const std::string &address, std::uint16_t port, bool shared, std::string &error);
/// Wakes a thread that polls it.
UniqueFd makeWakeFd();
void signalWakeFd(const UniqueFd &fd);
void drainWakeFd(const UniqueFd &fd);

} // namespace tzsim
