// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <span>

namespace Common::platform {

/// An event that a signal handler can set and a thread can wait for with a limit. It stays set until a wait takes it.
class WakeEvent
{
public:
    static constexpr std::chrono::milliseconds noLimit{-1};

    WakeEvent(); ///< @throws std::system_error where the system has no descriptor left
    ~WakeEvent();
    WakeEvent(const WakeEvent &) = delete;
    WakeEvent &operator=(const WakeEvent &) = delete;

    /// Async-signal-safe.
    void set() noexcept;
    /// Waits for the event and takes it; false when the limit ran out. One beyond 24 days counts as 24 days.
    /// Async-signal-safe.
    bool wait(std::chrono::milliseconds limit = noLimit) noexcept;
    /// Waits for one of several; the first that is set is taken. @return its index, -1 when the limit ran out
    static int waitAny(std::span<WakeEvent *const> events, std::chrono::milliseconds limit) noexcept;

    /// Readable while the event is set: for an event loop that waits for more than this. The event stays the owner.
    int descriptor() const noexcept { return m_descriptor; }

private:
    bool take() noexcept;

    int m_descriptor;
};

} // namespace Common::platform
