// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tzsim {

/// The network that the simulated boxes live in: box n has the address prefix + "." + (firstHost + n), n from 0 to 15.
struct Options
{
    std::string prefix = "192.168.201";        ///< first three octets
    int firstHost = 130;                       ///< last octet of box 0
    std::uint16_t port = 8000;                 ///< UDP port of the box protocol
    std::uint16_t discoveryPort = 8080;        ///< UDP port that discovery requests go to
    std::string broadcast = "255.255.255.255"; ///< address that discovery requests go to
    std::string problem;                       ///< why these options cannot be used; empty when they can

    /// The real network, or the loopback network that TZVCI_NETWORK names. A value that is not of the form 127.x.y
    /// leaves a text in problem, which Simulator::start() reports: nothing is ever opened on the real network then.
    static Options fromEnvironment();
    /// Moves all addresses to the loopback network @p network ("127.x.y"); false, changing nothing, for anything else.
    bool useLoopback(std::string_view network);

    bool isLoopback() const { return prefix.starts_with("127."); }
    /// Address of a box, empty for an index outside 0 to 15.
    std::string boxAddress(int index) const;
};

} // namespace tzsim
