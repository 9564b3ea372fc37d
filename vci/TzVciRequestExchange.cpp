// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciRequestExchange.h"

#include "common/Log.h"
#include "vci/TzVciProtocol.h"
#include "vci/TzVciTypes.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace {

void copyReply(const TzVciProtocolData &from, TzVciProtocolData &to)
{
    to.length = from.length;
    std::copy_n(from.payload.begin(), from.payloadLength(), to.payload.begin());
}

} // namespace

TzVciRequestExchange::TzVciRequestExchange(int deviceIndex, Send send)
    : m_deviceIndex(deviceIndex)
    , m_send(std::move(send))
{
}

int TzVciRequestExchange::request(const TzVciProtocolData &request, TzVciProtocolData &response, int timeoutMs)
{
    const std::lock_guard exchangeLock(m_exchangeMutex);
    std::unique_lock lock(m_mutex);
    response.length = 0;
    m_responseOk = false;
    m_reply.length = 0;
    // Sent with the lock held, so that even the fastest reply finds the request pending. A datagram that is lost shows
    // as a time-out, whether it was lost here or on its way.
    m_send(encodeProtocolData(request));
    m_pending = request;
    m_isPending = true;

    int result = TzVciResult::requestTimedOut;
    // One wait, not repeated: waking up without an answer counts as a refusal.
    if (timeoutMs > 0 && m_answered.wait_for(lock, std::chrono::milliseconds(timeoutMs)) == std::cv_status::no_timeout)
        result = m_responseOk ? TzVciResult::ok : TzVciResult::requestRefused;
    if (result == TzVciResult::ok && m_reply.length != 0)
        copyReply(m_reply, response);
    m_pending = TzVciProtocolData();
    m_isPending = false;
    lock.unlock();

    if (result == TzVciResult::requestTimedOut)
        Common::logError("Request Device{} timed out after {} ms", m_deviceIndex, timeoutMs);
    return result;
}

void TzVciRequestExchange::handleRecord(const TzVciProtocolData &record)
{
    const std::lock_guard lock(m_mutex);
    if (!isAwaited(record))
        return;
    if (record.length == 1) {
        const std::uint8_t status = record.payload[0];
        m_responseOk = status == 0;
        if (status != 0)
            Common::logError("Device {} channel {} responsed error code: {}", m_deviceIndex, record.channel + 1,
                             status);
    } else {
        copyReply(record, m_reply);
        m_responseOk = true;
    }
    m_answered.notify_one();
}

bool TzVciRequestExchange::isAwaited(const TzVciProtocolData &record) const
{
    return m_isPending && record.protocol == m_pending.protocol && record.command == m_pending.command &&
           record.channel == m_pending.channel;
}
