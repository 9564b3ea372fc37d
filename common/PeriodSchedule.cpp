// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/PeriodSchedule.h"

#include <algorithm>
#include <utility>

namespace Common {

namespace {
using Millisecond = std::chrono::milliseconds;
} // namespace

void PeriodSchedule::add(std::vector<SendFrame> &&frames, TimePoint now)
{
    putBack();
    if (m_frames.empty())
        m_gridStart = now;
    const TimePoint start = nextGridPoint(now);
    for (SendFrame &frame : frames)
        addFrame(std::move(frame), start);
}

void PeriodSchedule::addFrame(SendFrame &&added, TimePoint start)
{
    remove(added.key);
    Frame &frame = m_frames[added.key];
    frame.key = added.key;
    frame.bytes = std::move(added.bytes);
    frame.period = Millisecond(added.period);
    frame.due = start + Millisecond(added.delay);
    frame.order = m_nextOrder++;
    push(&frame);
}

bool PeriodSchedule::update(std::uint64_t key, std::vector<char> &&bytes)
{
    const auto found = m_frames.find(key);
    if (found == m_frames.end())
        return false;
    putBack();
    found->second.bytes = std::move(bytes);
    return true;
}

std::size_t PeriodSchedule::removeIf(const std::function<bool(std::uint64_t key)> &matches)
{
    const auto frameMatches = [&](const Frame *frame) { return matches(frame->key); };
    putBack();
    std::erase_if(m_batch, frameMatches); // of a batch that is being sent
    if (std::erase_if(m_heap, frameMatches) > 0)
        std::make_heap(m_heap.begin(), m_heap.end(), isLater);
    return std::erase_if(m_frames, [&](const auto &entry) { return matches(entry.first); });
}

bool PeriodSchedule::remove(std::uint64_t key)
{
    return m_frames.contains(key) && removeIf([key](std::uint64_t other) { return other == key; }) > 0;
}

PeriodSchedule::TimePoint PeriodSchedule::prepare()
{
    if (m_state == State::Prepared)
        return m_batch.front()->due;
    if (m_heap.empty())
        return TimePoint::max();

    const TimePoint due = m_heap.front()->due;
    while (!m_heap.empty() && m_heap.front()->due == due)
        m_batch.push_back(pop());
    buildDatagrams();
    m_state = State::Prepared;
    return due;
}

PeriodSchedule::Batch PeriodSchedule::begin(TimePoint now)
{
    if (prepare() == TimePoint::max())
        return {};
    // All that can wait is left to finish(): this is the way from the wake-up to the send.
    m_state = State::Sending;
    m_begun = now;
    return {.datagrams = std::span(m_datagrams).first(m_datagramCount),
            .frames = m_batch.size(),
            .lateness = now - m_batch.front()->due};
}

std::uint64_t PeriodSchedule::finish()
{
    std::uint64_t skipped = 0;
    for (Frame *frame : m_batch) {
        const auto missed = (m_begun - frame->due) / frame->period;
        skipped += static_cast<std::uint64_t>(missed);
        frame->due += frame->period * (missed + 1);
    }
    returnToHeap();
    return skipped;
}

bool PeriodSchedule::isLater(const Frame *left, const Frame *right) noexcept
{
    return left->due != right->due ? left->due > right->due : left->order > right->order;
}

PeriodSchedule::TimePoint PeriodSchedule::nextGridPoint(TimePoint now) const
{
    return m_gridStart + std::chrono::ceil<Millisecond>(std::max(now, m_gridStart) - m_gridStart);
}

void PeriodSchedule::push(Frame *frame)
{
    m_heap.push_back(frame);
    std::push_heap(m_heap.begin(), m_heap.end(), isLater);
}

PeriodSchedule::Frame *PeriodSchedule::pop()
{
    std::pop_heap(m_heap.begin(), m_heap.end(), isLater);
    Frame *const frame = m_heap.back();
    m_heap.pop_back();
    return frame;
}

// Takes a prepared batch apart, because a frame of it changes or an earlier one may come. One that is being sent stays.
void PeriodSchedule::putBack()
{
    if (m_state == State::Prepared)
        returnToHeap();
}

void PeriodSchedule::returnToHeap()
{
    m_state = State::Idle;
    for (Frame *frame : m_batch)
        push(frame);
    m_batch.clear();
}

void PeriodSchedule::buildDatagrams()
{
    m_datagramCount = 0;
    for (const Frame *frame : m_batch)
        append(frame->bytes);
}

void PeriodSchedule::append(const std::vector<char> &bytes)
{
    const bool fits =
        m_datagramCount > 0 && m_datagrams[m_datagramCount - 1].bytes.size() + bytes.size() <= maxDatagramSize;
    if (!fits) {
        if (m_datagramCount == m_datagrams.size())
            m_datagrams.emplace_back().bytes.reserve(maxDatagramSize);
        m_datagrams[m_datagramCount].bytes.clear();
        m_datagrams[m_datagramCount].frameCount = 0;
        ++m_datagramCount;
    }
    Datagram &datagram = m_datagrams[m_datagramCount - 1];
    datagram.bytes.insert(datagram.bytes.end(), bytes.begin(), bytes.end());
    ++datagram.frameCount;
}

} // namespace Common
