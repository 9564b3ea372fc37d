// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

/// What is left to do on the bus when the process dies: ready-made datagrams that close every open channel, and a flag
/// that stops all senders. No function takes a lock or allocates, so that fire() works whatever a crashed thread holds.
///
/// Threads: fire() and fired() from any thread at any time; acquireSlot(), replaceSocket() and releaseSlot() from any
/// thread; arm() and
/// disarm() of one slot by one thread at a time (the device's own mutex sees to that).
namespace Common::EmergencyStop {

inline constexpr int maxSlots = 32;                ///< sockets that can be registered at a time
inline constexpr int maxChannelsPerSlot = 64;      ///< channels that can be armed for one socket
inline constexpr std::size_t maxDatagramSize = 32; ///< bytes of one close datagram

/// Takes a slot for a connected socket. @return the slot, or -1 when none is left or the socket is negative
int acquireSlot(int socket);
/// Puts a new connected socket in the place of the slot's own and keeps the datagrams. The old one is still open; once
/// this has returned fire() no longer touches it. @return false, with nothing changed, if the slot does not hold it
bool replaceSocket(int slot, int oldSocket, int newSocket);
/// Gives the slot back and forgets its datagrams. Once it has returned fire() no longer touches the socket, which may
/// then be closed. A slot of -1 is ignored, as in arm() and disarm().
void releaseSlot(int slot);

/// Registers or replaces the datagram that closes one channel. One that is empty or too long, or one channel too many
/// for the slot, is left out with a warning in the log.
void arm(int slot, std::uint8_t protocol, std::uint8_t channel, std::span<const char> closeDatagram);
/// The channel is closed: forgets its datagram.
void disarm(int slot, std::uint8_t protocol, std::uint8_t channel);

/// Sets the flag, then sends every armed datagram once, without waiting.
void fire() noexcept;
/// True after fire(): senders stop for good.
bool fired() noexcept;
/// Takes the flag back. For tests alone.
void reset();

} // namespace Common::EmergencyStop
