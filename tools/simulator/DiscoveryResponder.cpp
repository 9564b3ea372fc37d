// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/simulator/DiscoveryResponder.h"

#include "tools/simulator/Wire.h"

#include <arpa/inet.h>
#include <array>
#include <poll.h>
#include <pthread.h>
#include <sys/socket.h>

namespace tzsim {

DiscoveryResponder::~DiscoveryResponder()
{
    stop();
}

bool DiscoveryResponder::start(const Options &options, Handler handler, std::string &error)
{
    m_options = options;
    m_handler = std::move(handler);
    m_socket = bindUdp(options.broadcast, options.discoveryPort, true, error);
    if (m_socket.get() < 0)
        return false;
    m_wake = makeWakeFd();
    m_stop = false;
    m_thread = std::thread([this] { run(); });
    return true;
}

void DiscoveryResponder::stop()
{
    m_stop = true;
    if (m_thread.joinable()) {
        signalWakeFd(m_wake);
        m_thread.join();
    }
    m_socket.reset();
}

bool DiscoveryResponder::isOurs(const sockaddr_in &from) const
{
    if (!m_options.isLoopback())
        return true;
    std::array<char, INET_ADDRSTRLEN> text{};
    ::inet_ntop(AF_INET, &from.sin_addr, text.data(), text.size());
    return std::string_view(text.data()).starts_with(m_options.prefix + ".");
}

void DiscoveryResponder::run()
{
    ::pthread_setname_np(::pthread_self(), "sim-discovery");
    std::array<std::uint8_t, 64> buffer{}; // a request has 11 bytes
    while (!m_stop) {
        std::array<pollfd, 2> fds = {{{m_wake.get(), POLLIN, 0}, {m_socket.get(), POLLIN, 0}}};
        if (::poll(fds.data(), fds.size(), -1) <= 0 || fds[1].revents == 0)
            continue;
        sockaddr_in from{};
        socklen_t length = sizeof from;
        // With MSG_TRUNC the true size comes back, so that a longer datagram is not taken for a request.
        const auto size = ::recvfrom(m_socket.get(), buffer.data(), buffer.size(), MSG_DONTWAIT | MSG_TRUNC,
                                     reinterpret_cast<sockaddr *>(&from), &length);
        if (size <= 0 || static_cast<std::size_t>(size) > buffer.size())
            continue;
        if (wire::isDiscoveryRequest(std::span(buffer).first(static_cast<std::size_t>(size))) && isOurs(from))
            m_handler(from);
    }
}

} // namespace tzsim
