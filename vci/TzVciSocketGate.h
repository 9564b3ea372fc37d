// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/platform/Socket.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

/// The one current socket of a link, for any number of threads at once and without a lock.
///
/// A thread that works with the socket holds a Use of it. Retiring the socket makes it unavailable at once and wakes
/// whoever waits in it; it is closed when the last Use has gone, so that a descriptor number which the system has given
/// out again is never read from or written to.
///
/// Threads: use(), isOpen() and retire() from any thread; install() from one thread at a time, with none installed.
/// No Use may outlive the gate.
class TzVciSocketGate
{
    struct Slot
    {
        std::atomic<std::uint32_t> users{0};   // one for being current, one for each Use; 0: nobody may join any more
        std::atomic<bool> isFree{true};        // its socket is let go, another may be installed
        Common::platform::SharedSocket socket; // fixed while users is not 0
    };

public:
    class [[nodiscard]] Use
    {
    public:
        Use() = default;
        Use(Use &&other) noexcept;
        Use &operator=(Use &&other) noexcept;
        ~Use() { leave(m_slot); }
        explicit operator bool() const noexcept { return m_slot != nullptr; }
        /// To be called on a Use that holds a socket.
        const Common::platform::SharedSocket &socket() const noexcept { return m_slot->socket; }

    private:
        friend class TzVciSocketGate;
        explicit Use(Slot *slot) noexcept
            : m_slot(slot)
        {
        }
        Slot *m_slot = nullptr;
    };

    TzVciSocketGate() = default;
    ~TzVciSocketGate() { retire(); }
    TzVciSocketGate(const TzVciSocketGate &) = delete;
    TzVciSocketGate &operator=(const TzVciSocketGate &) = delete;

    /// Makes an open socket the current one.
    void install(Common::platform::SharedSocket socket);
    Use use() const noexcept;
    bool isOpen() const noexcept { return m_current.load(std::memory_order_acquire) != nullptr; }
    /// Takes the current socket away. @return true for the one caller that did so
    bool retire() noexcept;

private:
    static void leave(Slot *slot) noexcept;

    std::atomic<Slot *> m_current{nullptr};
    // Never shrinks while the gate lives: a thread may look at a slot that was retired a moment ago.
    std::vector<std::unique_ptr<Slot>> m_slots; // install() only
};
