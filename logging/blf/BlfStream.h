// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/blf/BlfContainers.h"
#include "logging/blf/BlfObjects.h"

namespace BLF {

/// The objects of a log in their order, wherever containers cut them.
class BlfStream
{
public:
    BlfStream(const QString &path, std::function<void()> pulse);

    /// @return false for what is no BLF log
    bool open() { return m_containers.open(m_path); }
    /// The object that is next until take() or pass().
    bool peek(ObjectHeader &header);
    /// Gives the object's bytes, until the next call of another function.
    ObjectBytes take() noexcept;
    /// Goes on behind the object, if there is one.
    void pass() noexcept;
    /// Passes over the object if it has been taken.
    void release() noexcept;
    /// Tells that the object taken is malformed.
    void tellRefused();
    /// Whether something of what was passed so far could not be read.
    bool isDamaged() const noexcept { return m_damage.count() > 0; }

private:
    bool findObject();
    bool fetch();
    void tellGap();

    const QString m_path;
    BlfDamageLog m_damage{m_path};
    BlfContainers m_containers;
    BlfWindow m_window;
    BlfObjectSearch m_search{BlfObjectSearch::Level::stream};
    std::span<const std::byte> m_object; // empty: none has been found
    bool m_isInWindow = false;           // m_object is
    bool m_isTaken = false;              // m_object has been
    bool m_isLastPart = false;           // nothing of what comes belongs to what is in the window
    bool m_isLossTold = false;           // the next gap is the trace of a loss that has been told
    bool m_hasEnded = false;
};

} // namespace BLF
