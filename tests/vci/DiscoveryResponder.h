// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciNetwork.h"

#include <atomic>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

namespace tztest {

/// Boxes as the discovery sees them: hears the broadcast and answers from the address of each box.
class DiscoveryResponder
{
public:
    struct Box
    {
        int index;
        std::uint16_t canChannels;
        std::uint16_t linChannels;
    };

    DiscoveryResponder(const TzVciNetwork &network, std::vector<Box> boxes);
    ~DiscoveryResponder();
    DiscoveryResponder(const DiscoveryResponder &) = delete;
    DiscoveryResponder &operator=(const DiscoveryResponder &) = delete;

    /// Datagrams that came by broadcast.
    std::vector<std::vector<std::uint8_t>> requests() const;

    /// The test's network with a discovery port of its own: a broadcast on loopback reaches every process.
    static TzVciNetwork uniqueNetwork();

private:
    void run();

    const TzVciNetwork m_network;
    const std::vector<Box> m_boxes;
    int m_socket = -1;
    std::atomic<bool> m_stopping{false};
    mutable std::mutex m_mutex; // protects m_requests
    std::vector<std::vector<std::uint8_t>> m_requests;
    std::thread m_thread; // last: uses all above
};

} // namespace tztest
