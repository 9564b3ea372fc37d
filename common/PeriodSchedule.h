// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/SendFrame.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <span>
#include <unordered_map>
#include <vector>

namespace Common {

/// Which frames of a PeriodSender are due when, and the datagrams that carry them. Knows no thread and no clock: time
/// is passed in.
///
/// All frames stand on one grid of whole milliseconds that starts when the first frame is added to an empty schedule.
/// So frames with the same due time go out in one datagram, however they were added, and there is at most one wake-up a
/// millisecond. Due times are multiples of the period from the first one: lateness never adds up. Who comes too late
/// sends each frame once, for the latest grid point, and the ones before it are counted as skipped: after a stall there
/// is no burst of old frames on the bus.
///
/// Sending goes in three steps, so that the datagrams stand ready before they are due: prepare() builds the next batch,
/// begin() takes it at its time, finish() puts its frames back. Between begin() and finish() the batch may be read
/// without a lock while other calls change the schedule under one: a removed frame stays in the batch that is being
/// sent.
class PeriodSchedule
{
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    /// The largest UDP payload that passes Ethernet unfragmented; a single longer frame travels alone.
    static constexpr std::size_t maxDatagramSize = 1472;

    struct Datagram
    {
        std::vector<char> bytes;
        int frameCount = 0;
    };
    /// What begin() hands out.
    struct Batch
    {
        std::span<const Datagram> datagrams; ///< valid until finish()
        std::uint64_t frames = 0;            ///< in all datagrams
        std::chrono::nanoseconds lateness{}; ///< how long ago the batch was due
    };

    /// Starts frames @p delay milliseconds after @p now. A frame with a known key takes the place of the old one.
    void add(std::vector<SendFrame> &&frames, TimePoint now);
    /// New bytes for a running frame, from its next batch on; false for an unknown key.
    bool update(std::uint64_t key, std::vector<char> &&bytes);
    /// @return the number of frames removed
    std::size_t removeIf(const std::function<bool(std::uint64_t key)> &matches);
    bool remove(std::uint64_t key);

    /// Builds the datagrams of the next due time, unless they stand already. @return that time; the clock's maximum
    /// when nothing is to be sent
    TimePoint prepare();
    /// Takes the prepared batch, to be sent at once. @p now must not be before prepare()'s result.
    Batch begin(TimePoint now);
    /// The batch was sent: its frames wait for their next due times.
    /// @return the number of sends that were left out because their time had passed before begin()
    std::uint64_t finish();

    bool isSending() const noexcept { return m_state == State::Sending; }
    std::size_t frameCount() const noexcept { return m_frames.size(); }

private:
    struct Frame
    {
        std::uint64_t key = 0;
        std::vector<char> bytes;
        std::chrono::milliseconds period{};
        TimePoint due;
        std::uint64_t order = 0; // by which frames with one due time are sorted: the order of their adding
    };
    enum class State
    {
        Idle,
        Prepared,
        Sending
    };

    static bool isLater(const Frame *left, const Frame *right) noexcept;
    TimePoint nextGridPoint(TimePoint now) const;
    void addFrame(SendFrame &&frame, TimePoint start);
    void push(Frame *frame);
    Frame *pop();
    void putBack();
    void returnToHeap();
    void buildDatagrams();
    void append(const std::vector<char> &bytes);

    std::unordered_map<std::uint64_t, Frame> m_frames; // its nodes do not move: the heap and the batch point at them
    std::vector<Frame *> m_heap;                       // the earliest due time is in front
    std::vector<Frame *> m_batch;                      // taken from the heap by prepare() until finish()
    std::vector<Datagram> m_datagrams;                 // kept at their largest number, to allocate nothing when running
    std::size_t m_datagramCount = 0;                   // of m_datagrams, in use
    TimePoint m_gridStart;
    TimePoint m_begun; // of the batch that is being sent
    std::uint64_t m_nextOrder = 0;
    State m_state = State::Idle;
};

} // namespace Common
