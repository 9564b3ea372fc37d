// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/tools/simulator/HostSocket.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <cerrno>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tzsimtest {

namespace {

sockaddr_in toAddress(const std::string &address, std::uint16_t port)
{
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_port = htons(port);
    EXPECT_EQ(::inet_pton(AF_INET, address.c_str(), &result.sin_addr), 1) << address;
    return result;
}

void append(Bytes &bytes, std::uint64_t value, int count)
{
    for (int i = 0; i < count; ++i, value >>= 8)
        bytes.push_back(static_cast<std::uint8_t>(value));
}

} // namespace

Bytes hex(std::string_view text)
{
    std::string digits;
    for (const char c : text) {
        if (c != ' ')
            digits += c;
    }
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoul(digits.substr(i, 2), nullptr, 16)));
    return bytes;
}

std::string toHex(const Bytes &bytes)
{
    return fmt::format("{:02x}", fmt::join(bytes, " "));
}

HostSocket::HostSocket(const std::string &localAddress)
    : m_fd(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0))
{
    const sockaddr_in local = toAddress(localAddress, 0);
    EXPECT_EQ(::bind(m_fd, reinterpret_cast<const sockaddr *>(&local), sizeof local), 0);
    const int on = 1;
    const int receiveBuffer = 4 * 1024 * 1024;
    ::setsockopt(m_fd, SOL_SOCKET, SO_BROADCAST, &on, sizeof on);
    ::setsockopt(m_fd, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
}

HostSocket::~HostSocket()
{
    ::close(m_fd);
}

void HostSocket::connectTo(const std::string &address, std::uint16_t port)
{
    const sockaddr_in peer = toAddress(address, port);
    EXPECT_EQ(::connect(m_fd, reinterpret_cast<const sockaddr *>(&peer), sizeof peer), 0);
}

bool HostSocket::send(const Bytes &bytes)
{
    const bool ok = ::send(m_fd, bytes.data(), bytes.size(), MSG_NOSIGNAL) >= 0;
    m_lastError = ok ? 0 : errno;
    return ok;
}

bool HostSocket::sendTo(const std::string &address, std::uint16_t port, const Bytes &bytes)
{
    const sockaddr_in peer = toAddress(address, port);
    return ::sendto(m_fd, bytes.data(), bytes.size(), MSG_NOSIGNAL, reinterpret_cast<const sockaddr *>(&peer),
                    sizeof peer) >= 0;
}

std::optional<HostSocket::Datagram> HostSocket::receive(std::chrono::milliseconds limit)
{
    pollfd fd{m_fd, POLLIN, 0};
    m_lastError = 0;
    if (::poll(&fd, 1, static_cast<int>(limit.count())) <= 0)
        return std::nullopt;
    Bytes buffer(65'536);
    sockaddr_in from{};
    socklen_t length = sizeof from;
    const auto size =
        ::recvfrom(m_fd, buffer.data(), buffer.size(), MSG_DONTWAIT, reinterpret_cast<sockaddr *>(&from), &length);
    if (size < 0) {
        m_lastError = errno;
        return std::nullopt;
    }
    buffer.resize(static_cast<std::size_t>(size));
    std::array<char, INET_ADDRSTRLEN> text{};
    ::inet_ntop(AF_INET, &from.sin_addr, text.data(), text.size());
    return Datagram{std::move(buffer), fmt::format("{}:{}", text.data(), ntohs(from.sin_port))};
}

Bytes HostSocket::receiveBytes(std::chrono::milliseconds limit)
{
    auto datagram = receive(limit);
    return datagram ? std::move(datagram->bytes) : Bytes();
}

std::uint32_t u32(const Bytes &bytes, std::size_t at)
{
    std::uint32_t value = 0;
    for (std::size_t i = 4; i > 0; --i)
        value = value << 8 | bytes.at(at + i - 1);
    return value;
}

std::uint64_t u64(const Bytes &bytes, std::size_t at)
{
    return static_cast<std::uint64_t>(u32(bytes, at + 4)) << 32 | u32(bytes, at);
}

std::uint32_t BoxFrame::canId() const
{
    return u32(payload, 0);
}
std::uint64_t BoxFrame::ticks() const
{
    return u64(payload, 8);
}

std::vector<BoxFrame> split(const Bytes &datagram)
{
    std::vector<BoxFrame> frames;
    std::size_t at = 0;
    while (at + 9 <= datagram.size()) {
        EXPECT_EQ(datagram[at], 0x55);
        EXPECT_EQ(datagram[at + 1], 0xAA);
        const std::size_t length = datagram[at + 6] | static_cast<std::size_t>(datagram[at + 7]) << 8;
        if (at + length + 9 > datagram.size())
            break;
        const auto payload = datagram.begin() + static_cast<std::ptrdiff_t>(at + 8);
        frames.push_back({datagram[at + 2], datagram[at + 3], datagram[at + 4], datagram[at + 5],
                          Bytes(payload, payload + static_cast<std::ptrdiff_t>(length))});
        at += length + 9;
    }
    EXPECT_EQ(at, datagram.size()) << toHex(datagram);
    return frames;
}

Bytes hostFrame(std::uint8_t protocol, std::uint8_t command, std::uint8_t channel, std::uint8_t param,
                const Bytes &payload)
{
    Bytes bytes = {0xAA, 0x55, protocol, command, channel, param};
    append(bytes, payload.size(), 2);
    bytes.insert(bytes.end(), payload.begin(), payload.end());
    bytes.push_back(0);
    return bytes;
}

Bytes canTransmit(std::uint8_t channel, std::uint32_t id, std::uint8_t flags, const Bytes &data)
{
    Bytes payload;
    append(payload, id, 4);
    append(payload, data.size(), 1);
    append(payload, flags, 1);
    payload.resize(16); // reserved byte, type and time are the box's to fill
    for (const std::uint8_t byte : data)
        payload.push_back(byte);
    return hostFrame(1, 0x30, channel, 0, payload);
}

Bytes linTransmit(std::uint8_t channel, std::uint8_t id, std::uint8_t action, const Bytes &data,
                  std::uint8_t checksumType)
{
    Bytes payload = {id, static_cast<std::uint8_t>(data.size()), checksumType, action};
    payload.resize(16);
    for (const std::uint8_t byte : data)
        payload.push_back(byte);
    payload.resize(24);
    return hostFrame(5, 0x30, channel, 0, payload);
}

} // namespace tzsimtest
