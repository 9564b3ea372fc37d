// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/simulator/BoxLink.h"

#include <fmt/format.h>

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/uio.h>

namespace tzsim {

namespace {

// Holds some 10 000 datagrams of one frame each, should the host send faster than the box reads.
constexpr int receiveBufferBytes = 8 * 1024 * 1024;

std::string errorText(int code)
{
    return std::strerror(code);
} // NOLINT(concurrency-mt-unsafe): glibc's is safe

} // namespace

UniqueFd bindUdp(const std::string &address, std::uint16_t port, bool shared, std::string &error)
{
    UniqueFd fd(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    sockaddr_in local{};
    local.sin_family = AF_INET;
    local.sin_port = htons(port);
    const int on = 1;
    if (::inet_pton(AF_INET, address.c_str(), &local.sin_addr) != 1) {
        error = fmt::format("{} is not an IPv4 address", address);
        return {};
    }
    if (fd.get() < 0 || (shared && ::setsockopt(fd.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) != 0) ||
        ::bind(fd.get(), reinterpret_cast<const sockaddr *>(&local), sizeof local) != 0) {
        error = fmt::format("cannot bind {}:{}: {}", address, port, errorText(errno));
        return {};
    }
    // The system may grant less; losses then show in the counters of the host.
    ::setsockopt(fd.get(), SOL_SOCKET, SO_RCVBUF, &receiveBufferBytes, sizeof receiveBufferBytes);
    return fd;
}

UniqueFd makeWakeFd()
{
    return UniqueFd(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
}

void signalWakeFd(const UniqueFd &fd)
{
    const std::uint64_t one = 1;
    // Fails only when the counter is full, and then the thread is awake anyway.
    [[maybe_unused]] const auto written = ::write(fd.get(), &one, sizeof one);
}

void drainWakeFd(const UniqueFd &fd)
{
    std::uint64_t count = 0;
    [[maybe_unused]] const auto got = ::read(fd.get(), &count, sizeof count);
}

bool BoxLink::open(const Options &options, int index, std::string &error)
{
    const std::string address = options.boxAddress(index);
    UniqueFd socket = bindUdp(address, options.port, false, error);
    if (socket.get() < 0)
        return false;
    UniqueFd discovery = bindUdp(address, options.discoveryPort, false, error);
    if (discovery.get() < 0)
        return false;
    m_socket = std::move(socket);
    m_discovery = std::move(discovery);
    return true;
}

void BoxLink::close()
{
    m_socket.reset();
    m_discovery.reset();
    m_host.reset();
}

bool BoxLink::isHost(const sockaddr_in &address) const
{
    return m_host && m_host->sin_addr.s_addr == address.sin_addr.s_addr && m_host->sin_port == address.sin_port;
}

bool BoxLink::setHost(const sockaddr_in &host)
{
    if (isHost(host))
        return false;
    m_host = host;
    return true;
}

bool BoxLink::sendTo(const sockaddr_in &to, std::span<const std::uint8_t> bytes)
{
    if (!isOpen())
        return false;
    const auto sent = ::sendto(m_socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL,
                               reinterpret_cast<const sockaddr *>(&to), sizeof to);
    if (sent < 0) {
        ++totals.errors;
        return false;
    }
    ++totals.datagrams;
    totals.bytes += bytes.size();
    return true;
}

bool BoxLink::sendDiscoveryReply(const sockaddr_in &to, std::span<const std::uint8_t> bytes)
{
    if (!isOpen())
        return false;
    return ::sendto(m_discovery.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL,
                    reinterpret_cast<const sockaddr *>(&to), sizeof to) >= 0;
}

void BoxLink::sendToHost(DatagramPacker &packer)
{
    const std::size_t count = packer.count();
    if (count == 0)
        return;
    if (!isOpen() || !m_host) {
        packer.clear();
        return;
    }
    std::array<mmsghdr, DatagramPacker::capacity> messages{};
    std::array<iovec, DatagramPacker::capacity> parts{};
    for (std::size_t i = 0; i < count; ++i) {
        const std::span<std::uint8_t> datagram = packer.datagram(i);
        parts[i] = {datagram.data(), datagram.size()};
        messages[i].msg_hdr.msg_name = &*m_host;
        messages[i].msg_hdr.msg_namelen = sizeof *m_host;
        messages[i].msg_hdr.msg_iov = &parts[i];
        messages[i].msg_hdr.msg_iovlen = 1;
    }
    std::size_t done = 0;
    while (done < count) {
        const int sent = ::sendmmsg(m_socket.get(), &messages[done], static_cast<unsigned>(count - done), MSG_NOSIGNAL);
        if (sent <= 0) {
            if (errno == EINTR)
                continue;
            ++totals.errors; // this datagram is lost, the next may pass
            ++done;
            continue;
        }
        for (int i = 0; i < sent; ++i)
            totals.bytes += parts[done + static_cast<std::size_t>(i)].iov_len;
        totals.datagrams += static_cast<std::uint64_t>(sent);
        done += static_cast<std::size_t>(sent);
    }
    packer.clear();
}

} // namespace tzsim
