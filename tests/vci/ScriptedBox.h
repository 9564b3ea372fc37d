// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciNetwork.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <netinet/in.h>

namespace tztest {

/// A device that does exactly what a test tells it, misbehaviour included: a UDP socket at a device's address with its
/// own, plain reading of the wire. It answers every request with success until a rule says otherwise.
class ScriptedBox
{
public:
    /// One request, or one frame sent to the bus, as it stood on the wire.
    struct Request
    {
        int protocol = 0;
        int command = 0;
        int channel = 0;
        int param = 0;
        std::vector<std::uint8_t> payload;

        bool operator==(const Request &) const = default;
        std::string text() const; ///< "protocol command channel param: payload", hexadecimal
    };
    /// What to do about a request: call reply() any number of times, or not at all.
    using Rule = std::function<void(ScriptedBox &, const Request &)>;

    explicit ScriptedBox(int deviceIndex = 0, const TzVciNetwork &network = TzVciNetwork::current());
    ~ScriptedBox();
    ScriptedBox(const ScriptedBox &) = delete;
    ScriptedBox &operator=(const ScriptedBox &) = delete;

    /// Replaces the behaviour for all requests.
    void setRule(Rule rule);
    /// The behaviour of a box in order: version 1.2.3.4, base time 1000000, success for all else. For use in rules.
    void answer(const Request &request);
    void replyStatus(const Request &request, std::uint8_t status);
    void reply(const Request &request, const std::vector<std::uint8_t> &payload);

    /// Sends one datagram to the host that spoke last.
    void sendRaw(const std::vector<std::uint8_t> &datagram);
    /// A frame of the device-to-host direction, to be sent alone or with others.
    static std::vector<std::uint8_t> frame(int protocol, int command, int channel,
                                           const std::vector<std::uint8_t> &payload);
    /// CAN traffic: 16 bytes of header with id and time stamp, and the data.
    static std::vector<std::uint8_t> canFrame(int channel, std::uint32_t id, std::uint64_t timestamp,
                                              const std::vector<std::uint8_t> &data);

    /// Closes the socket: the system answers further datagrams with "port unreachable".
    void vanish();

    std::vector<Request> requests() const; ///< without heartbeats
    std::vector<std::string> requestTexts() const;
    std::size_t requestCount() const;
    void clearRequests();

private:
    void run();
    void handleDatagram(const std::uint8_t *bytes, std::size_t size);

    std::atomic<int> m_socket{-1};
    std::atomic<bool> m_stopping{false};
    mutable std::mutex m_mutex; // protects all below
    sockaddr_in m_host{};
    Rule m_rule;
    std::vector<Request> m_requests;
    std::thread m_thread; // last: uses all above
};

} // namespace tztest
