// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/TzFrameDrain.h"

#include "app/TzFrameQueue.h"
#include "common/Log.h"

#include <algorithm>
#include <utility>

TzFrameDrain::TzFrameDrain(const Family &family, TzFrameQueue &queue, Deliver deliver)
    : m_family(family)
    , m_queue(queue)
    , m_deliver(std::move(deliver))
    , m_timer(intervalMs, family.threadName)
{
    m_batch.reserve(TzFrameQueue::batchSize);
    m_timer.setCallback([this] { tick(); });
}

TzFrameDrain::~TzFrameDrain()
{
    stop();
}

bool TzFrameDrain::start()
{
    if (isRunning())
        return true;
    m_stopping.store(false);
    m_queue.setDrained(true);
    if (m_timer.start(0))
        return true;
    m_queue.setDrained(false);
    return false;
}

void TzFrameDrain::stop()
{
    if (!isRunning())
        return;
    m_stopping.store(true); // a tick under full load would not end by itself
    m_timer.stop();
    std::size_t left = m_queue.waiting(); // a box that goes on sending must not hold the UI thread here
    while (left > 0) {
        const std::size_t taken = passOn();
        if (taken == 0)
            break;
        left -= std::min(left, taken);
    }
    m_queue.setDrained(false); // not before: what arrives in front of the idle limit is no standstill yet
}

void TzFrameDrain::tick()
{
    while (!m_stopping.load(std::memory_order_relaxed)) {
        const std::size_t taken = passOn();
        if (taken == 0 || !m_family.repeats)
            return;
        if (taken == TzFrameQueue::batchSize)
            Common::logWarning("UI message buffer may be full, continuing to drain...");
    }
}

std::size_t TzFrameDrain::passOn()
{
    const std::size_t taken = m_queue.take(m_batch);
    if (taken > 0)
        m_deliver(m_batch);
    m_batch.clear();
    return taken;
}
