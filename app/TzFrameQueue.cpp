// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/TzFrameQueue.h"

#include "common/Log.h"

#include <algorithm>
#include <iterator>

TzFrameQueue::TzFrameQueue(const char *familyName)
    : m_familyName(familyName)
{
}

void TzFrameQueue::put(const std::vector<TzVciMessage> &batch)
{
    const std::size_t count = roomFor(batch.size());
    if (count > 0 && !m_queue.enqueue_bulk(batch.data(), count))
        m_waiting.fetch_sub(count, std::memory_order_relaxed);
}

std::size_t TzFrameQueue::roomFor(std::size_t count)
{
    const std::size_t before = m_waiting.fetch_add(count, std::memory_order_relaxed);
    if (m_drained.load(std::memory_order_relaxed) || before + count <= idleLimit)
        return count;
    const std::size_t room = idleLimit - std::min(before, idleLimit);
    m_waiting.fetch_sub(count - room, std::memory_order_relaxed);
    if (!m_warned.exchange(true, std::memory_order_relaxed))
        Common::logWarning("{} frames arrive while no {} channel is open: {} are kept, further ones are dropped",
                           m_familyName, m_familyName, idleLimit);
    return room;
}

std::size_t TzFrameQueue::take(std::vector<TzVciMessage> &batch)
{
    batch.clear();
    const std::size_t count = m_queue.try_dequeue_bulk(std::back_inserter(batch), batchSize);
    m_waiting.fetch_sub(count, std::memory_order_relaxed);
    return count;
}

void TzFrameQueue::setDrained(bool drained)
{
    m_drained.store(drained, std::memory_order_relaxed);
    if (drained)
        m_warned.store(false, std::memory_order_relaxed);
}
