// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciMessage.h"
#include "vci/TzVciTypes.h"

#include <QString>

#include <array>
#include <atomic>
#include <cstdint>
#include <span>
#include <unordered_map>
#include <unordered_set>
#include <vector>

/// The door of a view: decides which frames enter it, and counts them.
///
/// Threads: accept() belongs to the thread that delivers, one at a time; it takes no lock and waits for nothing. All
/// else belongs to the UI thread. The crossings are atomics, each on its own: a batch that is under way while the
/// channels are changed may meet the old choice for one channel and the new one for another, and one that is counted
/// while the counters are reset may leave what it adds to some of them and not to others.
class TzViewIntake
{
public:
    /// Device index to the channel indexes chosen of it.
    using Channels = std::unordered_map<std::uint8_t, std::unordered_set<std::uint8_t>>;

    struct Counters
    {
        std::uint64_t total = 0;
        std::uint64_t rx = 0;
        std::uint64_t tx = 0;
        std::uint64_t err = 0;
    };

    /// Not paused, with channels 0 to 7 of all 16 devices chosen.
    /// @param viewKind  TzVciViewKind; its family tells how frames are counted
    explicit TzViewIntake(std::uint8_t viewKind);

    /// While paused nothing enters: the frames are gone for the view and for its recording.
    void setPaused(bool paused) noexcept { m_paused.store(paused, std::memory_order_relaxed); }
    bool isPaused() const noexcept { return m_paused.load(std::memory_order_relaxed); }

    /// An empty choice lets nothing in. Device indexes above 15 do not exist and are left out.
    void setDevices(const Channels &devices);
    const Channels &devices() const noexcept { return m_devices; }

    /// The frames of the batch that enter, counted.
    /// @return valid until the next call and as long as @p batch
    std::span<const TzVciMessage> accept(const std::vector<TzVciMessage> &batch);

    Counters counters() const noexcept;
    void resetCounters() noexcept;
    /// "Tl:%1 Rx:%2 Tx:%3 Err:%4", each number twelve digits wide.
    QString statusText() const;

private:
    static constexpr std::size_t wordBits = 64;
    using ChannelBits = std::array<std::atomic<std::uint64_t>, 256 / wordBits>; // a bit for each channel index

    bool isChosen(const TzVciMessage &message) const noexcept;
    void count(std::span<const TzVciMessage> messages) noexcept;

    const bool m_isLin;
    std::atomic<bool> m_paused{false};
    Channels m_devices;                                  // UI thread
    std::array<ChannelBits, tzVciMaxDevices> m_chosen{}; // the same choice for the delivering thread
    std::vector<TzVciMessage> m_accepted;                // of the delivering thread
    std::atomic<std::uint64_t> m_total{0};
    std::atomic<std::uint64_t> m_rx{0};
    std::atomic<std::uint64_t> m_tx{0};
    std::atomic<std::uint64_t> m_err{0};
};
