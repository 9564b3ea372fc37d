// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/SendFrame.h"
#include "common/platform/SteadySleeper.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <vector>

namespace Common {

/// One run of a SequenceSender: all that its thread uses, so that the run outlives a sender which its own completion
/// callback destroys.
///
/// Threads: execute() is the body of the run's thread; all other functions may be called from any thread.
class SequenceRun
{
public:
    struct Config
    {
        bool cyclic = false;
        std::uint64_t times = 1; ///< of a run that is not cyclic; 0 counts as 1
        std::chrono::milliseconds interval{};
        SendCallback send;
        std::function<void(int)> completed; ///< may be empty
    };

    SequenceRun(std::vector<SendFrame> &&frames, Config &&config);

    /// Sends until the end, then calls the completion callback.
    void execute();
    void stop() noexcept;
    /// False from the completion callback on.
    bool isRunning() const noexcept { return m_running.load(std::memory_order_acquire); }
    /// As SequenceSender::updateData(); false for an unknown key or after the end.
    bool updateData(std::uint64_t key, const std::vector<char> &bytes);

private:
    using Clock = platform::SteadySleeper::Clock;

    int sendAll();
    int sendPass();
    int sendFrame(std::size_t index);
    bool wait(std::chrono::milliseconds duration);
    std::chrono::milliseconds slotOf(const SendFrame &frame) const;
    std::chrono::milliseconds passDuration() const;
    bool isStopped() const noexcept;

    const Config m_config;
    std::vector<SendFrame> m_frames; // the bytes are protected by m_bytesMutex, all else never changes
    std::mutex m_bytesMutex;
    std::atomic<bool> m_running{true};
    std::atomic<bool> m_stopRequested{false};
    platform::SteadySleeper m_sleeper;

    // Of the run's thread alone.
    Clock::time_point m_deadline; // at which the timeline stands
    std::vector<char> m_datagram; // copy of the bytes that are being sent
};

} // namespace Common
