// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

namespace Common::platform {

/// One IPv4 address of an interface that is up.
struct InterfaceAddress
{
    std::string interface; ///< name of the interface itself, without an address label
    std::string ip;        ///< dotted
    bool isLoopback = false;
};

/// All of them, in the system's order; empty where the system refuses.
std::vector<InterfaceAddress> activeIPv4Addresses();

} // namespace Common::platform
