// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

namespace tzsoak {

/// Measures how long the event loop of the UI thread stands still, and beside it, on a thread that does nothing else,
/// how long the machine does. UI thread.
class GapWatch : public QObject
{
    Q_OBJECT
public:
    using Clock = std::chrono::system_clock; // that of the log's lines

    struct Gap
    {
        Clock::time_point from;
        Clock::time_point to;
        std::chrono::milliseconds length() const
        {
            return std::chrono::duration_cast<std::chrono::milliseconds>(to - from);
        }
    };

    GapWatch();
    void restart() { m_last = Clock::now(); } ///< what lies between is not noted

    /// Standstills of the event loop and of the machine that were long enough to be noted, in order.
    const std::vector<Gap> &gaps() const { return m_gaps; }
    std::vector<Gap> machineStalls() const;
    /// Time within [from, to] for which the machine stood still.
    std::chrono::milliseconds stalled(Clock::time_point from, Clock::time_point to) const;

private:
    void tick();
    void watchMachine(const std::stop_token &stop);

    QTimer m_timer;
    Clock::time_point m_last;
    std::vector<Gap> m_gaps;
    mutable std::mutex m_mutex; // protects m_stalls
    std::vector<Gap> m_stalls;
    std::jthread m_thread; // last: it uses the above
};

} // namespace tzsoak
