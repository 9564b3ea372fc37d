// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciMessage.h"

#include <concurrentqueue/concurrentqueue.h>

#include <atomic>
#include <cstddef>
#include <vector>

/// Frames of one family between the devices' receive threads and the drain. Lock-free: a receive thread never waits.
///
/// While the drain runs the queue grows as it needs to. While it is stopped nobody empties the queue, so it keeps at
/// most idleLimit frames; further ones are dropped, with one warning for each time that the drain stands still.
/// Threads: any number of producers, one consumer at a time.
class TzFrameQueue
{
public:
    static constexpr std::size_t batchSize = 2000;  ///< frames of one dequeue
    static constexpr std::size_t idleLimit = 20000; ///< frames kept while the drain is stopped

    /// @param familyName  "CAN" or "LIN", for the warning; a string with static storage
    explicit TzFrameQueue(const char *familyName);

    /// Puts a batch in. A batch for which there is no memory is lost.
    void put(const std::vector<TzVciMessage> &batch);
    /// Takes up to batchSize frames. @return their number; @p batch holds exactly them
    std::size_t take(std::vector<TzVciMessage> &batch);
    /// Frames that wait, exact while no put() or take() runs.
    std::size_t waiting() const { return m_waiting.load(std::memory_order_relaxed); }

    /// Told by the drain when it starts and stops.
    void setDrained(bool drained);

private:
    std::size_t roomFor(std::size_t count);

    const char *m_familyName;
    moodycamel::ConcurrentQueue<TzVciMessage> m_queue{batchSize};
    std::atomic<std::size_t> m_waiting{0}; // counted up before a put and down after a take: never below the truth
    std::atomic<bool> m_drained{false};
    std::atomic<bool> m_warned{false}; // cleared when the drain starts
};
