// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>

/// Options of a socket given by its descriptor. Sizes are in bytes; results are 0 or the system's error number.
namespace Common::platform {

int setReceiveTimeout(int socket, int ms);       ///< 0 ms: wait for ever; EINVAL below
int setSendBufferSize(int socket, int bytes);    ///< asks beyond the system's limit where the process may
int setReceiveBufferSize(int socket, int bytes); ///< likewise
int sendBufferSize(int socket);                  ///< as the system counts it; -1 on failure
int receiveBufferSize(int socket);               ///< likewise
/// Sends one datagram at once or not at all; takes no lock and allocates nothing.
bool sendNoWait(int socket, const char *data, std::size_t size) noexcept;

} // namespace Common::platform
