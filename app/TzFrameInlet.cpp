// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/TzFrameInlet.h"

#include <utility>

TzFrameInlet::TzFrameInlet(StatusTarget statusTarget)
    : m_statusTarget(std::move(statusTarget))
{
}

void TzFrameInlet::putCan(const std::vector<TzVciMessage> &batch)
{
    if (!isClosed())
        m_canQueue.put(batch);
}

void TzFrameInlet::putLin(const std::vector<TzVciMessage> &batch)
{
    if (!isClosed())
        m_linQueue.put(batch);
}

void TzFrameInlet::reportStatus(int deviceIndex, std::uint8_t cmd)
{
    const std::lock_guard lock(m_statusMutex);
    if (m_statusTarget)
        m_statusTarget(deviceIndex, cmd);
}

void TzFrameInlet::close()
{
    m_closed.store(true);
    const std::lock_guard lock(m_statusMutex);
    m_statusTarget = nullptr;
}
