// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tzsimtest {

using Bytes = std::vector<std::uint8_t>;

/// Bytes from hexadecimal pairs; blanks are ignored.
Bytes hex(std::string_view text);
/// Lower-case pairs joined by blanks, for readable failures.
std::string toHex(const Bytes &bytes);

/// The limit of every wait for something that must come.
inline constexpr std::chrono::milliseconds replyLimit{10'000};

/// A plain UDP socket in the role of a host, bound to a free port of an address.
class HostSocket
{
public:
    struct Datagram
    {
        Bytes bytes;
        std::string from; ///< address:port
    };

    explicit HostSocket(const std::string &localAddress);
    ~HostSocket();
    HostSocket(const HostSocket &) = delete;
    HostSocket &operator=(const HostSocket &) = delete;

    void connectTo(const std::string &address, std::uint16_t port);
    /// To the connected peer; false with the error in lastError().
    bool send(const Bytes &bytes);
    bool sendTo(const std::string &address, std::uint16_t port, const Bytes &bytes);
    /// The next datagram; nothing when none came in time or the stack reports an error, see lastError().
    std::optional<Datagram> receive(std::chrono::milliseconds limit = replyLimit);
    /// The bytes of the next datagram; empty when none came.
    Bytes receiveBytes(std::chrono::milliseconds limit = replyLimit);
    int lastError() const { return m_lastError; } ///< errno of the last call that failed

private:
    int m_fd = -1;
    int m_lastError = 0;
};

/// One frame of a box, taken apart.
struct BoxFrame
{
    std::uint8_t protocol = 0;
    std::uint8_t command = 0;
    std::uint8_t channel = 0;
    std::uint8_t param = 0;
    Bytes payload;

    bool isTraffic() const { return command == 0x40 && protocol != 0x0F; }
    std::uint32_t canId() const;
    std::uint8_t dataLength() const { return payload.at(protocol == 1 ? 4 : 1); }
    std::uint8_t canFlags() const { return payload.at(5); }
    std::uint8_t canType() const { return payload.at(7); }
    std::uint8_t linDirection() const { return payload.at(6); }
    std::uint64_t ticks() const;
    Bytes data() const { return {payload.begin() + 16, payload.end()}; }
};

/// All frames of a datagram; the test fails when it holds anything else.
std::vector<BoxFrame> split(const Bytes &datagram);
std::uint32_t u32(const Bytes &bytes, std::size_t at);
std::uint64_t u64(const Bytes &bytes, std::size_t at);

/// A frame of a host: sync, header, length, payload, zero.
Bytes hostFrame(std::uint8_t protocol, std::uint8_t command, std::uint8_t channel, std::uint8_t param,
                const Bytes &payload = {});
Bytes canTransmit(std::uint8_t channel, std::uint32_t id, std::uint8_t flags, const Bytes &data);
Bytes linTransmit(std::uint8_t channel, std::uint8_t id, std::uint8_t action, const Bytes &data,
                  std::uint8_t checksumType = 1);

} // namespace tzsimtest
