// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Common {

class UDPClientSession;

/// A UDP socket with a receive thread and a bounded pool of buffers, as the discovery of devices needs it.
///
/// When all buffers are in use or waiting, further datagrams are dropped, with a warning that counts them. A datagram
/// that does not fit into a buffer, or is empty, is left out.
///
/// Threads: "tz-udp" receives into a lock-free queue. start() and stop() belong to one thread; broadcast() and
/// receive() may be called from any thread meanwhile.
class UDPClient
{
public:
    struct ConnectConfig
    {
        std::string localIp;  ///< address to bind to; empty for all
        int localPort = 0;    ///< 0: any free port
        std::string remoteIp; ///< if given with a port, datagrams from elsewhere are not received
        int remotePort = 0;
        int receiveTimeoutMs = 30;      ///< longest sleep of the receive thread
        bool broadcastEnabled = true;   ///< permits to send to a broadcast address
        bool reuseAddress = true;       ///< permits others to bind to the same address
        int connectTimeoutMs = 2000;    ///< kept for callers that fill it: a datagram socket connects at once
        int bufferSizeBytes = 0x800000; ///< receive buffer asked of the system; 0 leaves its default
        int bufferCount = 64;           ///< datagrams that can wait or be in use; below 1 counts as 1
    };

    /// One received datagram.
    struct DataBuffer
    {
        static constexpr std::size_t capacity = 1536;

        std::array<std::uint8_t, capacity> data;
        std::size_t size = 0; ///< valid bytes of data
        std::string address;  ///< sender, IPv4 in dotted form
    };
    /// Gives the buffer back to the pool when it is let go, which may be after stop() and even after the client is
    /// gone.
    using DataBufferPtr = std::unique_ptr<DataBuffer, std::function<void(DataBuffer *)>>;

    UDPClient();
    /// As stop().
    ~UDPClient();
    UDPClient(const UDPClient &) = delete;
    UDPClient &operator=(const UDPClient &) = delete;

    /// Opens and binds the socket and starts the receive thread; false, with the reason logged, if that cannot be done
    /// or the client is running already.
    bool start(const ConnectConfig &config);
    /// Ends the receive thread and closes the socket. Datagrams not fetched yet are dropped. May be started again.
    void stop();
    /// Sends one datagram. False when not running, for an address that is not IPv4, a port outside 1 to 65535, no data,
    /// or a refusal of the system.
    bool broadcast(const std::vector<char> &data, int port, const std::string &address);
    /// Fetches the next datagram without waiting; false if there is none or the client is not running.
    bool receive(DataBufferPtr &buffer);

private:
    std::shared_ptr<UDPClientSession> session() const;

    mutable std::mutex m_mutex;                  // protects m_session
    std::shared_ptr<UDPClientSession> m_session; // null while not running
};

} // namespace Common
