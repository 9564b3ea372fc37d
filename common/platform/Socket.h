// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <string>

namespace Common::platform {

/// What one receive brought.
struct Received
{
    std::ptrdiff_t size = 0;   ///< bytes of the datagram (0: empty, or the socket was shut down), negative on an error
    int error = 0;             ///< the system's error number where size is negative
    std::uint32_t dropped = 0; ///< datagrams that the kernel has dropped on this socket so far, where it told
    bool dropsKnown = false;   ///< dropped is set; needs countDrops()
};

/// A UDP/IPv4 socket that its users share by copies of this object: it is closed when the last copy is gone, so that a
/// descriptor number that the system has given to somebody else is never read or written.
///
/// Threads: all operations may run at the same time on copies in different threads. One object is not to be assigned
/// while another thread reads it: see SocketSlot.
/// Errors: operations that return int give 0, or the system's error number (EBADF without a socket). Nothing throws
/// while there is memory, and openUdp() leaves nothing open where it ends. Interrupted calls go round.
class SharedSocket
{
public:
    SharedSocket() = default; ///< no socket
    /// Opens a socket; isOpen() is false on failure, with the error number in @p error where given.
    static SharedSocket openUdp(int *error = nullptr);

    bool isOpen() const noexcept { return m_handle != nullptr; }
    int descriptor() const noexcept; ///< for options and the log; -1 without a socket
    bool operator==(const SharedSocket &other) const noexcept { return m_handle == other.m_handle; }

    /// Binds to a dotted address (empty: any) and a port (0: the system's choice). EINVAL for text that is no address.
    int bind(const std::string &ip, std::uint16_t port) const;
    /// Ties the socket to the interface that owns the address: the source address alone does not choose the card.
    /// ENODEV if no interface owns it.
    int bindToDevice(const std::string &localIp) const;
    int connect(const std::string &ip, std::uint16_t port) const;
    int allowBroadcast() const;
    int reuseAddress() const; ///< lets several sockets bind to one port
    int setReceiveTimeout(int ms) const;
    int setReceiveBufferSize(int bytes) const; ///< asks beyond the system's limit where the process may
    int setSendBufferSize(int bytes) const;
    int countDrops() const; ///< from now on Received::dropped is told

    /// Sends one datagram on a connected socket. @return 0, or the error number
    int send(std::span<const char> bytes) const;
    int sendTo(std::span<const char> bytes, const std::string &ip, std::uint16_t port) const;

    /// Waits for a datagram, at most the receive time-out; a longer one is cut to the buffer.
    Received receive(std::span<char> buffer) const;
    /// The same with the sender's dotted address and port.
    Received receiveFrom(std::span<char> buffer, std::string &senderIp, std::uint16_t &senderPort) const;

    /// Throws away what waits to be received at this moment; never waits itself.
    void discardReceived() const noexcept;

    /// Wakes all threads that wait in a receive, now and from now on: they get size 0.
    void shutdown() const;

    std::string localAddress() const; ///< empty without one
    std::uint16_t localPort() const;  ///< 0 without one
    /// True for the error numbers that mean "nothing arrived in time".
    static bool isTimeout(int error) noexcept;

private:
    class Handle;
    explicit SharedSocket(std::shared_ptr<const Handle> handle);
    Received receiveMessage(std::span<char> buffer, void *address, unsigned addressSize) const;

    std::shared_ptr<const Handle> m_handle;
};

/// A place for one socket that several threads read and change.
class SocketSlot
{
public:
    SharedSocket load() const
    {
        const std::lock_guard lock(m_mutex);
        return m_socket;
    }
    /// Puts a socket in and gives the one before back: of several threads that take it out, one alone gets it.
    SharedSocket exchange(SharedSocket socket)
    {
        const std::lock_guard lock(m_mutex);
        std::swap(m_socket, socket);
        return socket;
    }

private:
    mutable std::mutex m_mutex; // protects m_socket, for the length of a copy
    SharedSocket m_socket;
};

} // namespace Common::platform
