// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/TzFrameQueue.h"
#include "vci/TzVciMessage.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <vector>

/// What the callbacks given to the device manager share with the main window: the two queues, and the way for status
/// events. The callbacks own it together with the window, since a device may outlive the window and still deliver.
/// Every operation may be called from any thread; after close() all of them do nothing.
class TzFrameInlet
{
public:
    using StatusTarget = std::function<void(int deviceIndex, std::uint8_t cmd)>;

    /// @param statusTarget  called on the thread that reports the event, with a lock held: it must only pass on
    explicit TzFrameInlet(StatusTarget statusTarget);

    void putCan(const std::vector<TzVciMessage> &batch);
    void putLin(const std::vector<TzVciMessage> &batch);
    void reportStatus(int deviceIndex, std::uint8_t cmd);
    /// When it returns, the status target is not running and will not run again.
    void close();
    bool isClosed() const { return m_closed.load(std::memory_order_relaxed); }

    TzFrameQueue &canQueue() { return m_canQueue; }
    TzFrameQueue &linQueue() { return m_linQueue; }

private:
    TzFrameQueue m_canQueue{"CAN"};
    TzFrameQueue m_linQueue{"LIN"};
    std::atomic<bool> m_closed{false};
    std::mutex m_statusMutex; // protects m_statusTarget
    StatusTarget m_statusTarget;
};
