// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/platform/Socket.h"

#include "common/platform/NetworkInterfaces.h"
#include "common/platform/SocketOptions.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <optional>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace Common::platform {

class SharedSocket::Handle
{
public:
    Handle()
        : m_descriptor(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
    }
    ~Handle()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;
    int descriptor() const { return m_descriptor; }

private:
    const int m_descriptor;
};

namespace {

std::optional<sockaddr_in> toAddress(const std::string &ip, std::uint16_t port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    if (ip.empty())
        address.sin_addr.s_addr = htonl(INADDR_ANY);
    else if (::inet_pton(AF_INET, ip.c_str(), &address.sin_addr) != 1)
        return std::nullopt;
    return address;
}

const sockaddr *generic(const sockaddr_in &address)
{
    return reinterpret_cast<const sockaddr *>(&address); // the socket calls' own convention
}

std::string toText(const in_addr &address)
{
    std::array<char, INET_ADDRSTRLEN> text{};
    return ::inet_ntop(AF_INET, &address, text.data(), text.size()) ? text.data() : std::string();
}

int switchOn(int descriptor, int option)
{
    const int on = 1;
    return ::setsockopt(descriptor, SOL_SOCKET, option, &on, sizeof on) == 0 ? 0 : errno;
}

// An interrupted call goes round.
template <typename Call> auto uninterrupted(Call call)
{
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

void readDropCounter(msghdr &message, Received &received)
{
    for (cmsghdr *control = CMSG_FIRSTHDR(&message); control; control = CMSG_NXTHDR(&message, control)) {
        if (control->cmsg_level != SOL_SOCKET || control->cmsg_type != SO_RXQ_OVFL)
            continue;
        std::memcpy(&received.dropped, CMSG_DATA(control), sizeof received.dropped);
        received.dropsKnown = true;
    }
}

sockaddr_in localAddressOf(int descriptor)
{
    sockaddr_in address{};
    socklen_t size = sizeof address;
    if (::getsockname(descriptor, reinterpret_cast<sockaddr *>(&address), &size) != 0)
        address = {};
    return address;
}

} // namespace

SharedSocket::SharedSocket(std::shared_ptr<const Handle> handle)
    : m_handle(std::move(handle))
{
}

SharedSocket SharedSocket::openUdp(int *error)
{
    auto handle = std::make_shared<const Handle>(); // the memory first, so that no descriptor is lost without it
    const int result = handle->descriptor() < 0 ? errno : 0;
    if (error)
        *error = result;
    return result == 0 ? SharedSocket(std::move(handle)) : SharedSocket();
}

int SharedSocket::descriptor() const noexcept
{
    return m_handle ? m_handle->descriptor() : -1;
}

int SharedSocket::bind(const std::string &ip, std::uint16_t port) const
{
    const auto address = toAddress(ip, port);
    if (!address)
        return EINVAL;
    return ::bind(descriptor(), generic(*address), sizeof *address) == 0 ? 0 : errno;
}

int SharedSocket::bindToDevice(const std::string &localIp) const
{
    for (const InterfaceAddress &address : activeIPv4Addresses()) {
        if (address.ip != localIp)
            continue;
        return ::setsockopt(descriptor(), SOL_SOCKET, SO_BINDTODEVICE, address.interface.c_str(),
                            static_cast<socklen_t>(address.interface.size())) == 0
                   ? 0
                   : errno;
    }
    return ENODEV;
}

int SharedSocket::connect(const std::string &ip, std::uint16_t port) const
{
    const auto address = toAddress(ip, port);
    if (!address || ip.empty())
        return EINVAL;
    return uninterrupted([&] { return ::connect(descriptor(), generic(*address), sizeof *address); }) == 0 ? 0 : errno;
}

int SharedSocket::allowBroadcast() const
{
    return switchOn(descriptor(), SO_BROADCAST);
}

int SharedSocket::reuseAddress() const
{
    return switchOn(descriptor(), SO_REUSEADDR);
}

int SharedSocket::setReceiveTimeout(int ms) const
{
    return platform::setReceiveTimeout(descriptor(), ms);
}

int SharedSocket::setReceiveBufferSize(int bytes) const
{
    return platform::setReceiveBufferSize(descriptor(), bytes);
}

int SharedSocket::setSendBufferSize(int bytes) const
{
    return platform::setSendBufferSize(descriptor(), bytes);
}

int SharedSocket::countDrops() const
{
    return switchOn(descriptor(), SO_RXQ_OVFL);
}

int SharedSocket::send(std::span<const char> bytes) const
{
    return uninterrupted([&] { return ::send(descriptor(), bytes.data(), bytes.size(), MSG_NOSIGNAL); }) < 0 ? errno
                                                                                                             : 0;
}

int SharedSocket::sendTo(std::span<const char> bytes, const std::string &ip, std::uint16_t port) const
{
    const auto address = toAddress(ip, port);
    if (!address || ip.empty())
        return EINVAL;
    return uninterrupted([&] {
               return ::sendto(descriptor(), bytes.data(), bytes.size(), MSG_NOSIGNAL, generic(*address),
                               sizeof *address);
           }) < 0
               ? errno
               : 0;
}

Received SharedSocket::receiveMessage(std::span<char> buffer, void *address, unsigned addressSize) const
{
    iovec part{buffer.data(), buffer.size()};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(std::uint32_t))> control{};
    msghdr message{};
    Received received;
    received.size = uninterrupted([&] {
        message = {};
        message.msg_name = address;
        message.msg_namelen = addressSize;
        message.msg_iov = &part;
        message.msg_iovlen = 1;
        message.msg_control = control.data();
        message.msg_controllen = control.size();
        return ::recvmsg(descriptor(), &message, 0);
    });
    if (received.size < 0)
        received.error = errno;
    else
        readDropCounter(message, received);
    return received;
}

Received SharedSocket::receive(std::span<char> buffer) const
{
    return receiveMessage(buffer, nullptr, 0);
}

Received SharedSocket::receiveFrom(std::span<char> buffer, std::string &senderIp, std::uint16_t &senderPort) const
{
    sockaddr_in sender{};
    const Received received = receiveMessage(buffer, &sender, sizeof sender);
    if (received.size >= 0) {
        senderIp = toText(sender.sin_addr);
        senderPort = ntohs(sender.sin_port);
    }
    return received;
}

void SharedSocket::discardReceived() const noexcept
{
    // More than the largest receive buffer holds: who sends without an end does not keep us here.
    constexpr int mostDatagrams = 65'536;
    std::array<char, 1> rest; // all else is cut off
    int left = mostDatagrams;
    while (left > 0 && ::recv(descriptor(), rest.data(), rest.size(), MSG_DONTWAIT) >= 0)
        --left;
}

void SharedSocket::shutdown() const
{
    ::shutdown(descriptor(), SHUT_RDWR); // on a socket without a peer it reports an error, and wakes all the same
}

std::string SharedSocket::localAddress() const
{
    const sockaddr_in address = localAddressOf(descriptor());
    return address.sin_family == AF_INET ? toText(address.sin_addr) : std::string();
}

std::uint16_t SharedSocket::localPort() const
{
    return ntohs(localAddressOf(descriptor()).sin_port);
}

bool SharedSocket::isTimeout(int error) noexcept
{
    return error == EAGAIN || error == EWOULDBLOCK;
}

} // namespace Common::platform
