// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/vci/BoundSocket.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <arpa/inet.h>
#include <sys/socket.h>

namespace tztest {

int openBoundSocket(const std::string &ip, std::uint16_t port)
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

std::size_t receiveFrom(int socket, std::span<std::uint8_t> buffer, sockaddr_in &sender)
{
    socklen_t senderSize = sizeof(sender);
    const ssize_t size =
        ::recvfrom(socket, buffer.data(), buffer.size(), 0, reinterpret_cast<sockaddr *>(&sender), &senderSize);
    return static_cast<std::size_t>(std::max<ssize_t>(size, 0));
}

} // namespace tztest
