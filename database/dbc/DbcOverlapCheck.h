// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <vector>

struct DbcMessage;
struct DbcSignal;

/// Tells when a signal takes bits that an earlier signal of its message has. Two multiplexed signals may share bits,
/// whatever their multiplex values.
///
/// Each bit knows the first signal that took it, so a signal costs as much as it has bits, however many there are; of
/// a signal longer than a frame it costs as much as the frame's.
class DbcOverlapCheck
{
public:
    /// Takes the bits of the signals that the message has already.
    /// @param message  must outlive this object; its signals are those that were added, in that order, and begin within
    ///                 64 bytes, as all do that DbcSignalCheck accepts
    explicit DbcOverlapCheck(const DbcMessage &message);

    /// Logs the first signal of the message that shares bits with @p signal, if any, and takes the bits of this one:
    /// it becomes the message's next.
    void add(const DbcSignal &signal);

private:
    /// Indexes into the message's signals.
    struct Owners
    {
        std::uint32_t plain;
        std::uint32_t multiplexed;
    };

    void take(const DbcSignal &signal, std::uint32_t &firstShared);
    void logOverlap(const DbcSignal &signal, const DbcSignal &older) const;

    const DbcMessage &m_message;
    std::vector<Owners> m_owners; // by bit number
    std::uint32_t m_count = 0;    // signals taken
};
