// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/blf/BlfDamageLog.h"
#include "logging/blf/BlfFile.h"
#include "logging/blf/BlfInflater.h"
#include "logging/blf/BlfObjectSearch.h"

#include <functional>

namespace BLF {

/// Opens the containers of a log one after the other and gives out the stream of objects that they hold, in pieces.
///
/// Memory is bounded whatever sizes a file claims: a container is read and unpacked in steps, and gives no more than
/// it states, at most largestContent.
class BlfContainers
{
public:
    static constexpr std::uint64_t largestContent = 256 * 1024 * 1024; ///< bytes that a packed container may unpack to

    enum class Next
    {
        bytes,  ///< the next piece of the stream
        object, ///< an object that stands outside containers, to be had from object(); the stream goes on behind it
        loss,   ///< a piece of the stream is missing here, which has been told
        end
    };

    /// @param damage  outlives the containers
    /// @param pulse  called by next(), for each piece and each block of the file
    BlfContainers(BlfDamageLog &damage, std::function<void()> pulse);

    /// @return false for what is no BLF log
    bool open(const QString &path);
    /// Appends to @p stream what comes next, and calls the pulse, also while nothing comes.
    Next next(BlfWindow &stream);
    /// After Next::object: valid until the next call of next().
    std::span<const std::byte> object() const noexcept { return m_file.bytes().first(m_objectSize); }
    std::uint64_t objectPosition() const noexcept { return m_file.position(); }

private:
    enum class State
    {
        between,
        stored,
        packed
    };
    enum class Packing
    {
        stored,
        storedToTheEnd,
        packed,
        packedUnstated,
        unknown
    };

    bool findObject();
    void tellGap();
    void beginContainer(const BaseHeader &header);
    Packing packing(const BaseHeader &header, std::uint16_t method);
    void endContainer();
    bool hasPayload();
    bool copyStored(BlfWindow &stream);
    bool unpack(BlfWindow &stream);
    void checkPackedEnd();
    void endPacked(const BlfInflater::Progress &progress);

    BlfDamageLog &m_damage;
    const std::function<void()> m_pulse;
    BlfFile m_file;
    BlfInflater m_inflater;
    BlfObjectSearch m_search{BlfObjectSearch::Level::file};
    State m_state = State::between;
    bool m_hasLost = false;       // to be said by next()
    std::size_t m_objectSize = 0; // of object()
    // the container that is open
    std::uint64_t m_containerPosition = 0;
    std::uint64_t m_payloadLeft = 0; // bytes in the file
    std::uint64_t m_contentLimit = 0;
    std::uint64_t m_contentLeft = 0; // of m_contentLimit
    bool m_isCut = false;            // it claims to reach beyond the file's end
    bool m_mayBeStored = false;      // it looks packed, but does not say so
};

} // namespace BLF
