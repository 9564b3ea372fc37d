// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/DataBufferPool.h"
#include "common/UDPClient.h"
#include "common/WorkerThread.h"
#include "common/platform/Socket.h"
#include "common/platform/SteadySleeper.h"

#include <concurrentqueue/concurrentqueue.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

namespace Common {

/// What a UDPClient has between start() and stop(): the socket, the buffers and the receive thread "tz-udp".
///
/// Threads: open() and close() belong to one thread; the other functions may be called from any.
class UDPClientSession
{
public:
    explicit UDPClientSession(const UDPClient::ConnectConfig &config);
    /// As close().
    ~UDPClientSession();
    UDPClientSession(const UDPClientSession &) = delete;
    UDPClientSession &operator=(const UDPClientSession &) = delete;

    /// Opens and binds the socket and starts the thread; false, with the reason logged.
    bool open();
    /// Ends and joins the thread; receive() and send() fail from now on.
    void close();
    bool send(const std::vector<char> &data, int port, const std::string &address) const;
    bool receive(UDPClient::DataBufferPtr &buffer);

private:
    bool configureSocket(const UDPClient::ConnectConfig &config);
    void run();
    void handleError(int error);
    void store(std::span<const char> datagram, const std::string &sender);
    void reportDropped(bool atOnce);

    const UDPClient::ConnectConfig m_config;
    platform::SharedSocket m_socket;
    const std::shared_ptr<DataBufferPool> m_pool;
    moodycamel::ConcurrentQueue<UDPClient::DataBuffer *> m_received; // what waits at the end dies with the pool
    std::atomic<bool> m_stopping{false};
    platform::SteadySleeper m_sleeper;

    // Of the receive thread alone.
    std::uint64_t m_dropped = 0; // since the last report
    std::chrono::steady_clock::time_point m_lastReport;
    int m_lastError = 0;

    WorkerThread m_thread;
};

} // namespace Common
