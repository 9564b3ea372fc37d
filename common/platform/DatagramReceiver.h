// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace Common::platform {

/// Receives datagrams from a socket, several by one system call where several wait.
///
/// Allocates at construction alone. Threads: one thread at a time.
class DatagramReceiver
{
public:
    static constexpr std::size_t maxDatagramBytes = 8192; ///< what is beyond is cut off
    static constexpr std::size_t batchSize = 16;

    DatagramReceiver();
    ~DatagramReceiver();
    DatagramReceiver(const DatagramReceiver &) = delete;
    DatagramReceiver &operator=(const DatagramReceiver &) = delete;

    /// Waits for a datagram as long as the socket's receive time-out says, and takes with it those that wait already.
    /// @return the number of datagrams, or the negative error number; a socket that was shut down gives empty datagrams
    int receive(int descriptor) noexcept;
    /// A datagram of the last receive(), valid until the next. @param index  below the number returned
    std::span<const std::uint8_t> datagram(int index) const noexcept;
    /// Datagrams that the system has dropped on this socket so far because its receive buffer was full, as far as the
    /// last receive() told. Never goes back but by its wrap at 32 bits. Needs SharedSocket::countDrops().
    std::uint32_t droppedDatagrams() const noexcept { return m_dropped; }

    /// Asks the system for the same count directly: on a socket on which nothing more arrives, or at its end, for what
    /// was dropped behind datagrams that nobody will read.
    void updateDroppedDatagrams(int descriptor) noexcept;
    /// To be called when the next receive() takes another socket, whose count begins at 0.
    void forgetDroppedDatagrams() noexcept { m_dropped = 0; }

private:
    struct Buffers; // the system's own structures stay out of this header
    void noteDrops(int count) noexcept;
    void noteDropped(std::uint32_t dropped) noexcept;

    std::unique_ptr<Buffers> m_buffers;
    std::uint32_t m_dropped = 0;
};

} // namespace Common::platform
