// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/soak/BoxesRemote.h"
#include "tests/soak/SoakPlan.h"

#include <array>
#include <atomic>
#include <memory>

class TzVciDevice;

namespace tzsoak {

/// Counts what the links deliver, box by box, through a subscription of its own on every device that is opened.
/// watch() and counts() belong to the UI thread.
class LinkLedger
{
public:
    /// To be called when a device has been opened and before one of its channels is.
    void watch(TzVciDevice &device);
    FrameCounts counts() const;

private:
    struct Counters
    {
        std::atomic<std::uint64_t> can{0};
        std::atomic<std::uint64_t> lin{0};
    };
    // Shared with the subscriptions, which go with their devices.
    std::shared_ptr<std::array<Counters, boxCount>> m_counters = std::make_shared<std::array<Counters, boxCount>>();
};

} // namespace tzsoak
