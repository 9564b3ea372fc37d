// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Where the VCI boxes live: the device with index n has the address prefix + "." + (firstHost + n), n from 0 to 15.
///
/// The environment variable TZVCI_NETWORK=127.x.y moves all addresses to loopback and the discovery broadcast to
/// 127.255.255.255, so that tests and demonstrations never reach a real network interface.
struct TzVciNetwork
{
    std::string prefix = "192.168.201";        ///< first three octets
    int firstHost = 130;                       ///< last octet of device 0
    std::uint16_t devicePort = 8000;           ///< UDP port of the wire protocol
    std::uint16_t discoveryPort = 8080;        ///< UDP port of the discovery
    std::string broadcast = "255.255.255.255"; ///< destination of the discovery

    /// The process's network, which Common::Utils is told of as well: fromEnvironment() as it was at the first call.
    static const TzVciNetwork &current();
    /// The defaults, or what TZVCI_NETWORK says now. A value that is not of the form 127.x.y is refused with an error
    /// on the console, and the process ends: going on with the real addresses would reach a network that the user
    /// wanted to keep out of.
    static TzVciNetwork fromEnvironment();

    /// Fills @p network from a value of TZVCI_NETWORK; false, with @p network unchanged, unless it reads 127.x.y.
    static bool parseLoopback(std::string_view value, TzVciNetwork &network);

    bool isLoopback() const { return prefix.starts_with("127."); }
    /// Address of a device, empty for an index outside 0 to 15.
    std::string deviceAddress(int deviceIndex) const;
};
