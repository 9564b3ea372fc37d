// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/simulator/BoxLink.h"
#include "tools/simulator/Options.h"

#include <atomic>
#include <functional>
#include <netinet/in.h>
#include <string>
#include <thread>

namespace tzsim {

/// Hears the discovery broadcasts of a network. Several simulators may share the broadcast address of loopback: each
/// answers only requests that come from its own 127.x.y network.
///
/// Threads: one of its own ("sim-discovery"), which calls the handler.
class DiscoveryResponder
{
public:
    using Handler = std::function<void(const sockaddr_in &from)>;

    DiscoveryResponder() = default;
    ~DiscoveryResponder();
    DiscoveryResponder(const DiscoveryResponder &) = delete;
    DiscoveryResponder &operator=(const DiscoveryResponder &) = delete;

    /// False with a text in @p error when the port cannot be had.
    bool start(const Options &options, Handler handler, std::string &error);
    void stop(); ///< safe to repeat

private:
    void run();
    bool isOurs(const sockaddr_in &from) const;

    Options m_options;
    Handler m_handler;
    UniqueFd m_socket;
    UniqueFd m_wake;
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};

} // namespace tzsim
