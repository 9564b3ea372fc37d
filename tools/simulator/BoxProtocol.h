// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/simulator/BoxConfig.h"
#include "tools/simulator/ChannelState.h"
#include "tools/simulator/Request.h"
#include "tools/simulator/Wire.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <vector>

namespace tzsim {

/// The requests of a host and what they do to a box: its channels, and the replies with their faults. No socket, no
/// thread, no lock: the owner serialises the calls.
class BoxProtocol
{
public:
    using Bytes = std::vector<std::uint8_t>;

    /// What the box answers; nothing for a request that a fault has swallowed.
    struct Reply
    {
        Bytes datagram; ///< one whole frame
        std::chrono::milliseconds delay{0};
    };

    explicit BoxProtocol(const BoxConfig &config);

    /// Logs the request, acts on it and answers. @p ticks is the device time now.
    std::optional<Reply> handle(const wire::HostFrame &frame, std::uint64_t ticks);
    /// Logs a transmit request.
    void logTransmit(const wire::HostFrame &frame);
    void closeAllChannels();

    std::vector<CanChannelState> can;
    std::vector<LinChannelState> lin;
    std::vector<ReplyFault> faults;
    std::chrono::milliseconds replyDelay{0};
    std::deque<Request> requests; ///< without transmit requests
    std::deque<Request> transmits;
    /// Set by handle() when the rates of a CAN channel may have changed; the owner clears it.
    std::optional<std::size_t> ratesChanged;

private:
    Bytes answer(const Request &request, std::uint64_t ticks);
    std::uint8_t status(const Request &request);
    std::uint8_t openCan(const Request &request);
    std::uint8_t openLin(const Request &request);
    std::uint8_t close(const Request &request);
    std::uint8_t canParameter(const Request &request);
    std::uint8_t terminalResistor(const Request &request);
    void applyFaults(const Request &request, Bytes &payload, Reply &reply, bool &drop);

    const BoxConfig m_config;
};

} // namespace tzsim
