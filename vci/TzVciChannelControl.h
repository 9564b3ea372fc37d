// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciProtocolData.h"

#include <cstdint>
#include <functional>
#include <mutex>
#include <vector>

namespace Common {
class PeriodSender;
}
class TzVciCommunication;
class TzVciDeviceStore;
class TzVciRequestExchange;
struct TzVciCanChannelConfig;
struct TzVciLinChannelConfig;

/// Opens and closes the channels of one device: the sequence of requests, the open flags in the store, the datagrams
/// that close the channels in an emergency.
///
/// Threads: any; a call may take 500 ms for each request. One call runs at a time.
class TzVciChannelControl
{
public:
    /// What it works with; all of it outlives the object.
    struct Parts
    {
        TzVciDeviceStore &store;
        TzVciCommunication &link;
        TzVciRequestExchange &exchange;
        Common::PeriodSender &periodSender;
        std::function<void(std::uint8_t)> notifyStatus; ///< VciStatus
    };

    explicit TzVciChannelControl(Parts parts);

    /// @param channelIndex  -1 for all channels of the protocol
    /// @return TzVciResult::ok, linkDown, noChannel, openChannelRefused or parameterRefused. After a failure the
    ///         channels that were opened before it stay open; one whose parameter was refused is closed, even if it was
    ///         open before the call.
    int open(int deviceIndex, std::uint8_t protocol, int channelIndex);
    /// @return TzVciResult::ok, noChannel or closeChannelRefused; the channels count as closed in any case
    int close(int deviceIndex, std::uint8_t protocol, int channelIndex);

private:
    /// A channel in the words of the requests.
    struct Channel
    {
        int deviceIndex;
        std::uint8_t protocol;
        std::uint8_t index;
    };

    std::vector<std::uint32_t> channelList(int deviceIndex, std::uint8_t protocol, int channelIndex) const;
    int openOne(const Channel &channel);
    int openCan(const Channel &channel, const TzVciCanChannelConfig &config);
    int openLin(const Channel &channel, const TzVciLinChannelConfig &config);
    int sendOpen(const Channel &channel, const TzVciProtocolData &request);
    int configureFd(const Channel &channel, const TzVciCanChannelConfig &config);
    void closeHalfConfigured(const Channel &channel);
    int closeOne(const Channel &channel);
    void forceClosed(const Channel &channel);
    void markClosed(const Channel &channel);
    bool isOpen(const Channel &channel) const;
    void disarm(const Channel &channel);
    int send(const TzVciProtocolData &request);

    const Parts m_parts;
    std::mutex m_mutex; // the channel mutex: one opening or closing at a time
};
