// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/PeriodSchedule.h"
#include "common/SendFrame.h"
#include "common/WorkerThread.h"
#include "common/platform/SteadySleeper.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace Common {

/// Sends a set of frames at their periods, from 1 ms up.
///
/// A frame goes out first `delay` ms after it was added (within one ms, since all frames share a grid of whole
/// milliseconds) and then every `period` ms, counted from the first send: lateness never adds up. All frames that are
/// due together leave in one datagram of up to 1472 bytes. After a stall each frame goes out once and back to its grid;
/// the sends that were missed are counted and told in a warning, at most once a second. Once EmergencyStop has fired
/// nothing is sent any more.
///
/// Threads: the thread "tz-period", started with the first frame and joined by the destructor, runs the send callback.
/// All functions may be called from any thread, also from the callback; none is to be destroyed by its own callback.
/// A call that takes frames away waits for the callback that may be running with them: after it returned none of these
/// frames goes out. Only a call from the callback itself does not wait.
class PeriodSender
{
public:
    /// Results of addFrame() and addFrames().
    enum Result : int
    {
        Ok = 0,
        InvalidFrame = -1, ///< no frame at all, or one without bytes, or with a period of 0
        NoCallback = -2,   ///< setSendCallback() has not been called
        ThreadFailed = -3, ///< the system has no thread left
    };
    /// Counts since construction.
    struct Statistics
    {
        std::uint64_t frames = 0;               ///< handed to the send callback
        std::uint64_t datagrams = 0;            ///< calls of the send callback
        std::uint64_t failedDatagrams = 0;      ///< calls with a negative result
        std::uint64_t skippedFrames = 0;        ///< sends left out because their time had passed
        std::chrono::nanoseconds maxLateness{}; ///< of a batch at its sending
    };

    PeriodSender() = default;
    /// Stops sending; no callback runs any more when it returns.
    ~PeriodSender();
    PeriodSender(const PeriodSender &) = delete;
    PeriodSender &operator=(const PeriodSender &) = delete;

    /// When it returns the callback before is not running any more. Its negative result is counted and logged; the
    /// frame is not repeated before its next period.
    void setSendCallback(SendCallback callback);
    /// Binds the timing thread to a processor, or lets it go again.
    void enableCpuAffinity(bool enable);

    /// Starts sending. A frame with a key that runs already takes its place and starts anew. With a bad frame in the
    /// list nothing is changed. @return 0, or a negative Result
    int addFrame(SendFrame &&frame);
    int addFrames(const std::vector<SendFrame> &frames);
    int addFrames(std::vector<SendFrame> &&frames);

    /// New bytes for a running frame, from its next send on; false for an unknown key or no bytes.
    bool updateData(unsigned long long key, std::vector<char> &&bytes);
    /// Stops one frame; false for an unknown key.
    bool removeFrame(unsigned long long key);
    /// Stops all frames. @return 0
    int clear();
    /// Stops the frames whose key holds that kind and channel. @return 0, also when there are none
    int clear(unsigned short kind, unsigned short channel);
    /// Stops the frames whose key holds that kind. @return 0, also when there are none
    int clear(unsigned short kind);

    Statistics statistics() const;

private:
    using Clock = platform::SteadySleeper::Clock;
    struct SendResult
    {
        std::uint64_t frames = 0;
        std::uint64_t datagrams = 0;
        std::uint64_t failed = 0;
    };

    std::size_t removeIf(const std::function<bool(std::uint64_t key)> &matches);
    void waitForCallback(std::unique_lock<std::mutex> &lock);
    bool ensureThread();
    void run();
    void sendDueBatch(std::unique_lock<std::mutex> &lock, Clock::time_point now);
    SendResult sendDatagrams(const PeriodSchedule::Batch &batch, const SendCallback &callback);
    void reportSkipped(std::uint64_t skipped, Clock::time_point now);
    void applyAffinity();

    mutable std::mutex m_mutex; // protects the members down to m_statistics; not held during a callback
    std::condition_variable m_batchFinished;
    PeriodSchedule m_schedule;
    std::shared_ptr<const SendCallback> m_callback;
    std::uint64_t m_batchNumber = 0; // of finished batches
    bool m_threadStarted = false;
    Statistics m_statistics;

    // Of the timing thread alone.
    std::uint64_t m_reportedSkipped = 0;
    Clock::time_point m_lastReport;
    bool m_sendingFails = false;
    bool m_pinned = false;

    std::atomic<bool> m_wantPinned{false};
    std::atomic<bool> m_stopping{false};
    platform::SteadySleeper m_sleeper;
    WorkerThread m_thread;
};

} // namespace Common
