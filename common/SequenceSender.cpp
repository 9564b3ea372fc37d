// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/SequenceSender.h"

#include "common/SequenceRun.h"

#include <algorithm>
#include <utility>

namespace Common {

SequenceSender::SequenceSender() = default;

SequenceSender::~SequenceSender()
{
    stop();
    // On the run's own thread the start() of this very run may not have returned yet on another one.
    const std::lock_guard lifecycle(m_lifecycleMutex);
}

void SequenceSender::setSendCallback(SendCallback callback)
{
    const std::lock_guard lock(m_mutex);
    m_sendCallback = std::move(callback);
}

void SequenceSender::setCompletionCallback(std::function<void(int)> callback)
{
    const std::lock_guard lock(m_mutex);
    m_completionCallback = std::move(callback);
}

void SequenceSender::setConfig(bool cyclic, unsigned long long times, unsigned int interval)
{
    const std::lock_guard lock(m_mutex);
    m_cyclic = cyclic;
    m_times = times;
    m_interval = interval;
}

int SequenceSender::start(const std::vector<SendFrame> &frames)
{
    return start(std::vector<SendFrame>(frames));
}

int SequenceSender::start(std::vector<SendFrame> &&frames)
{
    if (m_thread.isCurrent())
        return AlreadyRunning;
    const std::lock_guard lifecycle(m_lifecycleMutex);
    if (const auto last = run(); last && last->isRunning())
        return AlreadyRunning;
    if (frames.empty() || std::any_of(frames.begin(), frames.end(), [](const auto &f) { return f.bytes.empty(); }))
        return InvalidFrame;

    std::shared_ptr<SequenceRun> next;
    {
        const std::lock_guard lock(m_mutex);
        if (!m_sendCallback)
            return NoCallback;
        next = std::make_shared<SequenceRun>(std::move(frames),
                                             SequenceRun::Config{.cyclic = m_cyclic,
                                                                 .times = m_times,
                                                                 .interval = std::chrono::milliseconds(m_interval),
                                                                 .send = m_sendCallback,
                                                                 .completed = m_completionCallback});
    }
    m_thread.join(); // the last run is over but for its completion callback
    {
        const std::lock_guard lock(m_mutex);
        m_run = next;
    }
    if (m_thread.start("tz-sequence", [next] { next->execute(); }))
        return Ok;
    const std::lock_guard lock(m_mutex);
    m_run.reset();
    return ThreadFailed;
}

void SequenceSender::stop()
{
    // Before the lock: another thread may hold it while it waits for this very run.
    if (const auto current = run())
        current->stop();
    if (m_thread.isCurrent())
        return;
    const std::lock_guard lifecycle(m_lifecycleMutex);
    if (const auto current = run())
        current->stop(); // one that was started meanwhile
    m_thread.join();
}

int SequenceSender::updateData(unsigned long long key, const std::vector<char> &bytes)
{
    const auto current = run();
    return current && !bytes.empty() && current->updateData(key, bytes) ? Ok : InvalidFrame;
}

std::shared_ptr<SequenceRun> SequenceSender::run() const
{
    const std::lock_guard lock(m_mutex);
    return m_run;
}

} // namespace Common
