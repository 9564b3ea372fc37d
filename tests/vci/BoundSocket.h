// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include <netinet/in.h>

namespace tztest {

/// A UDP socket of a test at an address of its network; one that cannot be had fails the test. The caller closes it.
/// @param port  0: the system's choice
int openBoundSocket(const std::string &ip, std::uint16_t port);

/// Waits at most 10 ms for a datagram, so that a loop over it can be ended. @return its size, 0 where none came
std::size_t receiveFrom(int socket, std::span<std::uint8_t> buffer, sockaddr_in &sender);

} // namespace tztest
