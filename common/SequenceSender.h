// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/SendFrame.h"
#include "common/WorkerThread.h"

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace Common {

class SequenceRun;

/// Sends a list of frames in its order, a number of times or in a loop, one datagram a frame.
///
/// A list sent a number of times: each frame is sent `delay` ms after the one before it, the first one `delay` ms after
/// the start. A loop is a schedule: each frame is sent at the beginning of its slot of `period` ms (of `delay` ms where
/// the period is 0), until stop(). A pass that would take no time at all takes 1 ms. All times are absolute, so that
/// lateness does not add up; only after a stall longer than the frame's own slot the rest moves back, since slots that
/// follow each other at once would collide on the bus.
///
/// A run ends after its last frame, by stop(), by EmergencyStop, or with the first negative result of the send
/// callback.
///
/// Threads: the thread "tz-sequence" of each run calls both callbacks. All functions may be called from any thread,
/// also from the callbacks; the object may even be destroyed by its completion callback. The callbacks and the
/// configuration are taken over by start().
class SequenceSender
{
public:
    /// Results of start() and updateData().
    enum Result : int
    {
        Ok = 0,
        InvalidFrame = -1,   ///< no frame at all, or one without bytes; updateData(): not running, or an unknown key
        NoCallback = -2,     ///< setSendCallback() has not been called
        ThreadFailed = -3,   ///< the system has no thread left
        AlreadyRunning = -4, ///< the last run goes on, or the call comes from a callback of it
    };

    SequenceSender();
    /// As stop().
    ~SequenceSender();
    SequenceSender(const SequenceSender &) = delete;
    SequenceSender &operator=(const SequenceSender &) = delete;

    void setSendCallback(SendCallback callback);
    /// Called exactly once for each successful start(), as the last thing of the run: with 0 at the end of the list or
    /// after stop(), otherwise with the negative result of the send callback.
    void setCompletionCallback(std::function<void(int)> callback);
    /// Without this call: once.
    /// @param cyclic    true for a loop until stop(); @p times does not count then
    /// @param times     passes through the list; 0 counts as 1
    /// @param interval  additional pause between two passes in ms
    void setConfig(bool cyclic, unsigned long long times, unsigned int interval);

    /// Begins a run. @return 0, or a negative Result
    int start(const std::vector<SendFrame> &frames);
    int start(std::vector<SendFrame> &&frames);
    /// Ends the run. When it returns both callbacks have ended, unless it was called from one of them.
    void stop();
    /// New bytes for all entries with that key, from their next send on. @return 0, or -1 when no run goes on, the key
    /// is unknown or there are no bytes
    int updateData(unsigned long long key, const std::vector<char> &bytes);

private:
    std::shared_ptr<SequenceRun> run() const;

    mutable std::mutex m_mutex; // protects the members down to m_run; not held during a callback
    SendCallback m_sendCallback;
    std::function<void(int)> m_completionCallback;
    bool m_cyclic = false;
    unsigned long long m_times = 1;
    unsigned int m_interval = 0;
    std::shared_ptr<SequenceRun> m_run; // null before the first start(); shared with its thread
    std::mutex m_lifecycleMutex;        // start() and stop() one after the other; never taken on the thread itself
    WorkerThread m_thread;
};

} // namespace Common
