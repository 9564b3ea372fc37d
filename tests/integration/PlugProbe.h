// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciDevice.h"

#include <atomic>
#include <cstdint>
#include <memory>

namespace tztest {

/// Subscribes to one opened device as a tool window does, counts what it is given, and notices every call that comes
/// after its subscription has ended.
class PlugProbe
{
public:
    explicit PlugProbe(TzVciDevice &device);

    /// The device has delivered at full load: many frames, an error frame and a LIN frame.
    bool hasTraffic() const;
    /// Ends the CAN subscription while the frames pour in; none may come from now on.
    void unsubscribeCan(TzVciDevice &device);
    /// To be called when the device has been closed: nothing may call any more.
    void noteClosed();
    /// Calls that came too late.
    std::uint64_t lateCalls() const { return m_state->lateCalls; }
    bool wasToldOfClose() const { return m_state->toldOfClose; }

private:
    struct State
    {
        std::atomic<std::uint64_t> frames{0};
        std::atomic<std::uint64_t> errorFrames{0};
        std::atomic<std::uint64_t> linFrames{0};
        std::atomic<std::uint64_t> lateCalls{0};
        std::atomic<bool> canEnded{false};
        std::atomic<bool> allEnded{false};
        std::atomic<bool> toldOfClose{false};
    };
    std::uint64_t key() const { return static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(m_state.get())); }

    // Shared with the callbacks, so that a call that comes too late is counted and harms nobody.
    std::shared_ptr<State> m_state = std::make_shared<State>();
};

} // namespace tztest
