// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciProtocolData.h"

#include <QByteArray>

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>

/// Requests and replies of one device. The protocol numbers neither, so one exchange at a time is on its way, and a
/// reply is known by protocol, command and channel alone.
///
/// Threads: any thread may call request() and then waits, if need be also for the exchanges before its own. The link's
/// receive thread calls handleRecord(), which never waits for a reply.
class TzVciRequestExchange
{
public:
    using Send = std::function<void(const QByteArray &)>;

    /// @param send  transmits one datagram; what becomes of it shows in the reply
    TzVciRequestExchange(int deviceIndex, Send send);

    /// Sends a request and waits for its reply.
    /// @param response  gets length and payload of a reply that is not a mere status; length 0 otherwise
    /// @return TzVciResult::ok, requestTimedOut, or requestRefused for a status other than 0
    int request(const TzVciProtocolData &request, TzVciProtocolData &response, int timeoutMs);

    /// Takes a record that may be the reply; one that nobody waits for is dropped.
    void handleRecord(const TzVciProtocolData &record);

private:
    bool isAwaited(const TzVciProtocolData &record) const;

    const int m_deviceIndex;
    const Send m_send;
    std::mutex m_exchangeMutex; // held for a whole exchange, so that exchanges follow on each other
    std::mutex m_mutex;         // the request mutex: protects all below
    std::condition_variable m_answered;
    TzVciProtocolData m_pending; // all zero while nobody waits
    TzVciProtocolData m_reply;   // length and payload alone
    bool m_isPending = false;
    bool m_responseOk = false;
};
