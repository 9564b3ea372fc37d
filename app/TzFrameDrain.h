// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/HeartbeatManager.h"
#include "vci/TzVciMessage.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

class TzFrameQueue;

/// Empties the queue of one family every 10 ms on a thread of its own and hands the frames on in batches.
///
/// start() and stop() belong to the UI thread. The deliver function runs on the drain thread, and in stop(), once that
/// thread has been joined, on the UI thread for what is left in the queue. It never runs twice at a time, and each run
/// happens before the next, so what receives the batches may count on their order.
class TzFrameDrain
{
public:
    /// How the two families differ.
    struct Family
    {
        std::uint8_t protocol = 0;        ///< TzVciProtocolId, 1 or 5
        const char *threadName = nullptr; ///< at most 15 characters
        bool repeats = false;             ///< true: a tick ends when the queue is empty; false: after one batch
    };
    static constexpr unsigned int intervalMs = 10;

    using Deliver = std::function<void(const std::vector<TzVciMessage> &batch)>;

    /// @param queue  must outlive the drain
    TzFrameDrain(const Family &family, TzFrameQueue &queue, Deliver deliver);
    ~TzFrameDrain();
    TzFrameDrain(const TzFrameDrain &) = delete;
    TzFrameDrain &operator=(const TzFrameDrain &) = delete;

    const Family &family() const { return m_family; }
    /// @return false if the thread could not be started; true if it runs already
    bool start();
    /// Ends the thread, then hands on what the queue holds at that moment.
    void stop();
    bool isRunning() const { return m_timer.isRunning(); }

private:
    void tick();
    std::size_t passOn();

    const Family m_family;
    TzFrameQueue &m_queue;
    const Deliver m_deliver;
    std::vector<TzVciMessage> m_batch; // of the thread that drains at the time
    std::atomic<bool> m_stopping{false};
    Common::HeartbeatManager m_timer; // last: its thread ends before the data it uses
};
