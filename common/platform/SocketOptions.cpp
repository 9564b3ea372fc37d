// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/platform/SocketOptions.h"

#include <cerrno>

#include <sys/socket.h>
#include <sys/time.h>

namespace Common::platform {

namespace {

int setOption(int socket, int option, const void *value, socklen_t size)
{
    return ::setsockopt(socket, SOL_SOCKET, option, value, size) == 0 ? 0 : errno;
}

// The plain option is silently cut to the system's limit; the forced one is for privileged processes.
int setBufferSize(int socket, int forcedOption, int plainOption, int bytes)
{
    if (setOption(socket, forcedOption, &bytes, sizeof bytes) == 0)
        return 0;
    return setOption(socket, plainOption, &bytes, sizeof bytes);
}

int bufferSize(int socket, int option)
{
    int bytes = 0;
    socklen_t size = sizeof bytes;
    return ::getsockopt(socket, SOL_SOCKET, option, &bytes, &size) == 0 ? bytes : -1;
}

} // namespace

int setReceiveTimeout(int socket, int ms)
{
    if (ms < 0)
        return EINVAL;
    timeval timeout{};
    timeout.tv_sec = ms / 1000;
    timeout.tv_usec = ms % 1000 * 1000;
    return setOption(socket, SO_RCVTIMEO, &timeout, sizeof timeout);
}

int setSendBufferSize(int socket, int bytes)
{
    return setBufferSize(socket, SO_SNDBUFFORCE, SO_SNDBUF, bytes);
}

int setReceiveBufferSize(int socket, int bytes)
{
    return setBufferSize(socket, SO_RCVBUFFORCE, SO_RCVBUF, bytes);
}

int sendBufferSize(int socket)
{
    return bufferSize(socket, SO_SNDBUF);
}

int receiveBufferSize(int socket)
{
    return bufferSize(socket, SO_RCVBUF);
}

bool sendNoWait(int socket, const char *data, std::size_t size) noexcept
{
    return ::send(socket, data, size, MSG_DONTWAIT | MSG_NOSIGNAL) == static_cast<ssize_t>(size);
}

} // namespace Common::platform
