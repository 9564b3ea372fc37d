// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/SequenceRun.h"

#include "common/EmergencyStop.h"
#include "common/platform/ThreadScheduling.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <utility>

namespace Common {

namespace {
constexpr std::chrono::milliseconds shortestPass{1};
} // namespace

SequenceRun::SequenceRun(std::vector<SendFrame> &&frames, Config &&config)
    : m_config(std::move(config))
    , m_frames(std::move(frames))
{
}

void SequenceRun::execute()
{
    platform::ThreadScheduling::requestExactSleeps();
    m_deadline = Clock::now();
    const int result = sendAll();
    m_running.store(false, std::memory_order_release);
    if (m_config.completed)
        m_config.completed(result);
}

void SequenceRun::stop() noexcept
{
    m_stopRequested.store(true, std::memory_order_release);
    m_sleeper.wake();
}

bool SequenceRun::updateData(std::uint64_t key, const std::vector<char> &bytes)
{
    if (!isRunning())
        return false;
    const std::lock_guard lock(m_bytesMutex);
    bool found = false;
    for (SendFrame &frame : m_frames) {
        if (frame.key == key) {
            frame.bytes = bytes;
            found = true;
        }
    }
    return found;
}

int SequenceRun::sendAll()
{
    // Without any delay in it the list would be sent as fast as the socket takes it, and be lost in the device.
    const auto pause = passDuration().count() > 0 ? m_config.interval : std::max(m_config.interval, shortestPass);
    const std::uint64_t times = std::max<std::uint64_t>(m_config.times, 1);
    for (std::uint64_t pass = 0; m_config.cyclic || pass < times; ++pass) {
        if (pass > 0 && !wait(pause))
            return 0;
        const int result = sendPass();
        if (result < 0 || isStopped())
            return std::min(result, 0);
    }
    return 0;
}

int SequenceRun::sendPass()
{
    for (std::size_t index = 0; index < m_frames.size(); ++index) {
        const auto slot = slotOf(m_frames[index]);
        if (!m_config.cyclic && !wait(slot)) // a delay lies before its frame
            return 0;
        if (const int result = sendFrame(index); result < 0)
            return result;
        if (m_config.cyclic && !wait(slot)) // a slot begins with its frame
            return 0;
    }
    return 0;
}

int SequenceRun::sendFrame(std::size_t index)
{
    if (isStopped())
        return 0;
    {
        const std::lock_guard lock(m_bytesMutex);
        m_datagram = m_frames[index].bytes;
    }
    return m_config.send(m_datagram, 1);
}

// Moves the timeline on and sleeps to it. @return false when the run is stopped
bool SequenceRun::wait(std::chrono::milliseconds duration)
{
    if (duration.count() > 0) {
        m_deadline += duration;
        while (true) {
            const auto ticket = m_sleeper.ticket();
            if (isStopped())
                return false;
            if (m_sleeper.sleepUntil(ticket, m_deadline))
                break;
        }
        // After a stall longer than the wait itself the rest moves back, instead of following in a burst.
        const auto now = Clock::now();
        if (now - m_deadline >= duration)
            m_deadline = now;
    }
    return !isStopped();
}

std::chrono::milliseconds SequenceRun::slotOf(const SendFrame &frame) const
{
    return std::chrono::milliseconds(m_config.cyclic && frame.period > 0 ? frame.period : frame.delay);
}

std::chrono::milliseconds SequenceRun::passDuration() const
{
    return std::transform_reduce(m_frames.begin(), m_frames.end(), std::chrono::milliseconds(0), std::plus<>(),
                                 [this](const SendFrame &frame) { return slotOf(frame); });
}

bool SequenceRun::isStopped() const noexcept
{
    return m_stopRequested.load(std::memory_order_acquire) || EmergencyStop::fired();
}

} // namespace Common
