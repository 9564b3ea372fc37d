// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/UDPClientSession.h"

#include "common/Log.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <system_error>

namespace Common {

namespace {

constexpr int defaultReceiveTimeoutMs = 30;
constexpr auto reportInterval = std::chrono::seconds(1);
constexpr auto pauseAfterError = std::chrono::milliseconds(100);

bool isPort(int port)
{
    return port > 0 && port <= std::numeric_limits<std::uint16_t>::max();
}

std::string errorText(int error)
{
    return std::system_category().message(error);
}

} // namespace

UDPClientSession::UDPClientSession(const UDPClient::ConnectConfig &config)
    : m_config(config)
    , m_pool(std::make_shared<DataBufferPool>(static_cast<std::size_t>(std::max(config.bufferCount, 1))))
{
}

UDPClientSession::~UDPClientSession()
{
    close();
}

bool UDPClientSession::open()
{
    int error = 0;
    m_socket = platform::SharedSocket::openUdp(&error);
    if (!m_socket.isOpen()) {
        logWarning("UDP client: no socket, {}", errorText(error));
        return false;
    }
    if (!configureSocket(m_config))
        return false;
    if (!m_thread.start("tz-udp", [this] { run(); })) {
        logWarning("UDP client: no thread to receive with");
        return false;
    }
    return true;
}

bool UDPClientSession::configureSocket(const UDPClient::ConnectConfig &config)
{
    const auto fail = [&config](const char *step, int error) {
        logWarning("UDP client: {} on {}:{} failed, {}", step, config.localIp, config.localPort, errorText(error));
        return false;
    };
    if (config.localPort != 0 && !isPort(config.localPort))
        return fail("bind", EINVAL);
    // Two sockets that share addresses may be given the same free port, and one would get the other's replies.
    if (config.reuseAddress && config.localPort != 0) {
        if (const int error = m_socket.reuseAddress(); error != 0)
            return fail("sharing the address", error);
    }
    if (config.broadcastEnabled) {
        if (const int error = m_socket.allowBroadcast(); error != 0)
            return fail("broadcast", error);
    }
    const int timeout = config.receiveTimeoutMs > 0 ? config.receiveTimeoutMs : defaultReceiveTimeoutMs;
    if (const int error = m_socket.setReceiveTimeout(timeout); error != 0)
        return fail("the receive time-out", error);
    if (config.bufferSizeBytes > 0) {
        if (const int error = m_socket.setReceiveBufferSize(config.bufferSizeBytes); error != 0)
            logDebug("UDP client: receive buffer of {} bytes not granted, {}", config.bufferSizeBytes,
                     errorText(error));
    }
    if (!config.localIp.empty()) {
        if (const int error = m_socket.bindToDevice(config.localIp); error != 0)
            logDebug("UDP client: not tied to the interface of {}, {}", config.localIp, errorText(error));
    }
    if (const int error = m_socket.bind(config.localIp, static_cast<std::uint16_t>(config.localPort)); error != 0)
        return fail("bind", error);
    if (!config.remoteIp.empty() && isPort(config.remotePort)) {
        const int error = m_socket.connect(config.remoteIp, static_cast<std::uint16_t>(config.remotePort));
        if (error != 0)
            return fail("connect", error);
    }
    return true;
}

void UDPClientSession::close()
{
    m_stopping.store(true, std::memory_order_release);
    m_socket.shutdown();
    m_sleeper.wake();
    m_thread.join();
}

bool UDPClientSession::send(const std::vector<char> &data, int port, const std::string &address) const
{
    if (m_stopping.load(std::memory_order_acquire) || data.empty() || !isPort(port))
        return false;
    const int error = m_socket.sendTo(data, address, static_cast<std::uint16_t>(port));
    if (error != 0)
        logDebug("UDP client: sending to {}:{} failed, {}", address, port, errorText(error));
    return error == 0;
}

bool UDPClientSession::receive(UDPClient::DataBufferPtr &buffer)
{
    UDPClient::DataBuffer *received = nullptr;
    if (m_stopping.load(std::memory_order_acquire) || !m_received.try_dequeue(received))
        return false;
    buffer = m_pool->wrap(received);
    return true;
}

void UDPClientSession::run()
{
    // One byte more than a buffer holds tells a datagram that does not fit from one that just does.
    std::array<char, UDPClient::DataBuffer::capacity + 1> datagram;
    std::string sender;
    while (!m_stopping.load(std::memory_order_acquire)) {
        std::uint16_t port = 0;
        const platform::Received received = m_socket.receiveFrom(datagram, sender, port);
        if (received.size < 0)
            handleError(received.error);
        else if (received.size > 0)
            store(std::span(datagram).first(static_cast<std::size_t>(received.size)), sender);
        reportDropped(false);
    }
    reportDropped(true);
}

void UDPClientSession::handleError(int error)
{
    if (platform::SharedSocket::isTimeout(error))
        return;
    if (error != m_lastError)
        logWarning("UDP client: receiving failed, {}", errorText(error));
    m_lastError = error;
    // Such an error may stay for a while, as when a network card goes down: look again, but not in a busy loop.
    const auto ticket = m_sleeper.ticket();
    if (!m_stopping.load(std::memory_order_acquire))
        (void)m_sleeper.sleepUntil(ticket, std::chrono::steady_clock::now() + pauseAfterError);
}

void UDPClientSession::store(std::span<const char> datagram, const std::string &sender)
{
    if (datagram.size() > UDPClient::DataBuffer::capacity) {
        logDebug("UDP client: a datagram from {} is longer than {} bytes and was left out", sender,
                 UDPClient::DataBuffer::capacity);
        return;
    }
    UDPClient::DataBuffer *const buffer = m_pool->take();
    if (!buffer) {
        ++m_dropped;
        return;
    }
    std::memcpy(buffer->data.data(), datagram.data(), datagram.size());
    buffer->size = datagram.size();
    buffer->address = sender;
    m_received.enqueue(buffer);
}

void UDPClientSession::reportDropped(bool atOnce)
{
    const auto now = std::chrono::steady_clock::now();
    if (m_dropped == 0 || (!atOnce && now - m_lastReport < reportInterval))
        return;
    logWarning("UDP client: {} datagrams dropped, all {} buffers are in use", m_dropped, m_pool->size());
    m_dropped = 0;
    m_lastReport = now;
}

} // namespace Common
