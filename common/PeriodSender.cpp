// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/PeriodSender.h"

#include "common/EmergencyStop.h"
#include "common/Log.h"
#include "common/Utils.h"
#include "common/platform/ThreadScheduling.h"

#include <algorithm>
#include <utility>

namespace Common {

namespace {

constexpr auto reportInterval = std::chrono::seconds(1);

bool isValid(const SendFrame &frame)
{
    return !frame.bytes.empty() && frame.period > 0;
}

} // namespace

PeriodSender::~PeriodSender()
{
    m_stopping.store(true, std::memory_order_release);
    m_sleeper.wake();
    m_thread.join();
}

void PeriodSender::setSendCallback(SendCallback callback)
{
    auto shared = callback ? std::make_shared<const SendCallback>(std::move(callback)) : nullptr;
    std::unique_lock lock(m_mutex);
    m_callback.swap(shared);
    waitForCallback(lock);
}

void PeriodSender::enableCpuAffinity(bool enable)
{
    m_wantPinned.store(enable, std::memory_order_release);
    m_sleeper.wake();
}

int PeriodSender::addFrame(SendFrame &&frame)
{
    std::vector<SendFrame> frames;
    frames.push_back(std::move(frame));
    return addFrames(std::move(frames));
}

int PeriodSender::addFrames(const std::vector<SendFrame> &frames)
{
    return addFrames(std::vector<SendFrame>(frames));
}

int PeriodSender::addFrames(std::vector<SendFrame> &&frames)
{
    const auto now = Clock::now();
    if (frames.empty() || !std::all_of(frames.begin(), frames.end(), isValid))
        return InvalidFrame;
    {
        const std::lock_guard lock(m_mutex);
        if (!m_callback)
            return NoCallback;
        if (!ensureThread())
            return ThreadFailed;
        m_schedule.add(std::move(frames), now);
    }
    m_sleeper.wake();
    return Ok;
}

bool PeriodSender::updateData(unsigned long long key, std::vector<char> &&bytes)
{
    if (bytes.empty())
        return false;
    const std::lock_guard lock(m_mutex);
    return m_schedule.update(key, std::move(bytes)); // due times stay as they are: no need to wake the thread
}

bool PeriodSender::removeFrame(unsigned long long key)
{
    return removeIf([key](std::uint64_t other) { return other == key; }) > 0;
}

int PeriodSender::clear()
{
    removeIf([](std::uint64_t) { return true; });
    return Ok;
}

int PeriodSender::clear(unsigned short kind, unsigned short channel)
{
    removeIf([kind, channel](std::uint64_t key) {
        unsigned short keyKind = 0;
        unsigned short keyChannel = 0;
        Utils::parseUtilsKey(key, keyKind, keyChannel);
        return keyKind == kind && keyChannel == channel;
    });
    return Ok;
}

int PeriodSender::clear(unsigned short kind)
{
    removeIf([kind](std::uint64_t key) {
        unsigned short keyKind = 0;
        unsigned short keyChannel = 0;
        Utils::parseUtilsKey(key, keyKind, keyChannel);
        return keyKind == kind;
    });
    return Ok;
}

PeriodSender::Statistics PeriodSender::statistics() const
{
    const std::lock_guard lock(m_mutex);
    return m_statistics;
}

std::size_t PeriodSender::removeIf(const std::function<bool(std::uint64_t key)> &matches)
{
    std::unique_lock lock(m_mutex);
    const std::size_t removed = m_schedule.removeIf(matches);
    // Also when nothing was found: a batch on its way may hold frames that another thread has just removed.
    waitForCallback(lock);
    return removed;
}

void PeriodSender::waitForCallback(std::unique_lock<std::mutex> &lock)
{
    if (m_thread.isCurrent())
        return;
    const auto batchNumber = m_batchNumber;
    m_batchFinished.wait(lock, [&] { return !m_schedule.isSending() || m_batchNumber != batchNumber; });
}

bool PeriodSender::ensureThread()
{
    if (!m_threadStarted)
        m_threadStarted = m_thread.start("tz-period", [this] { run(); });
    return m_threadStarted;
}

void PeriodSender::run()
{
    platform::ThreadScheduling::requestExactSleeps();
    if (!platform::ThreadScheduling::requestRealTimePriority())
        logDebug("Period sender: real-time priority is not granted");

    while (true) {
        const auto ticket = m_sleeper.ticket();
        if (m_stopping.load(std::memory_order_acquire))
            return;
        applyAffinity();

        std::unique_lock lock(m_mutex);
        const auto due = m_schedule.prepare();
        const auto now = Clock::now();
        if (due <= now) {
            sendDueBatch(lock, now);
        } else {
            lock.unlock();
            (void)m_sleeper.sleepUntil(ticket, due);
        }
    }
}

void PeriodSender::sendDueBatch(std::unique_lock<std::mutex> &lock, Clock::time_point now)
{
    const PeriodSchedule::Batch batch = m_schedule.begin(now);
    const auto callback = m_callback;
    lock.unlock();
    const SendResult result = callback ? sendDatagrams(batch, *callback) : SendResult{};
    lock.lock();
    m_statistics.skippedFrames += m_schedule.finish();
    ++m_batchNumber;
    m_statistics.frames += result.frames;
    m_statistics.datagrams += result.datagrams;
    m_statistics.failedDatagrams += result.failed;
    m_statistics.maxLateness = std::max(m_statistics.maxLateness, batch.lateness);
    const auto skipped = m_statistics.skippedFrames;
    lock.unlock();
    m_batchFinished.notify_all();
    reportSkipped(skipped, now);
}

PeriodSender::SendResult PeriodSender::sendDatagrams(const PeriodSchedule::Batch &batch, const SendCallback &callback)
{
    SendResult result;
    for (const PeriodSchedule::Datagram &datagram : batch.datagrams) {
        if (EmergencyStop::fired() || m_stopping.load(std::memory_order_acquire))
            break;
        const int status = callback(datagram.bytes, datagram.frameCount);
        ++result.datagrams;
        result.frames += static_cast<std::uint64_t>(datagram.frameCount);
        if (status < 0) {
            ++result.failed;
            if (!m_sendingFails) // each further one would say the same, a thousand times a second
                logWarning("Period sender: sending failed, error: {}", status);
        }
        m_sendingFails = status < 0;
    }
    return result;
}

void PeriodSender::reportSkipped(std::uint64_t skipped, Clock::time_point now)
{
    if (skipped == m_reportedSkipped || now - m_lastReport < reportInterval)
        return;
    logWarning("Period sender: {} sends skipped, their time had passed", skipped - m_reportedSkipped);
    m_reportedSkipped = skipped;
    m_lastReport = now;
}

void PeriodSender::applyAffinity()
{
    const bool wanted = m_wantPinned.load(std::memory_order_acquire);
    if (wanted == m_pinned)
        return;
    m_pinned = wanted;
    if (!wanted)
        platform::ThreadScheduling::unpin();
    else if (platform::ThreadScheduling::pinToProcessor() < 0)
        logDebug("Period sender: binding to a processor is not granted");
}

} // namespace Common
