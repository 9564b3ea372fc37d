// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/blf/BlfObjects.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>

namespace BLF {

class BlfStream;

/// A BLF log, object by object: open(), then peek() each object and read() or skip() it, then close().
///
/// Works through files of any length with one container and the rest of the one before in memory. Damage costs what
/// is damaged and is told by error lines of the log, of which a file brings a bounded number. One thread at a time.
class BlfReader
{
public:
    BlfReader();
    ~BlfReader();
    BlfReader(const BlfReader &) = delete;
    BlfReader &operator=(const BlfReader &) = delete;

    /// Called now and then while peek() works through a long file, at least for each container.
    void setPulse(std::function<void()> pulse);

    /// @return false where the file cannot be opened or is no BLF log; logs nothing
    bool open(const QString &path);
    /// The next object's header, which stays the next one until read() or skip(). Containers are no objects.
    /// @return false at the end
    bool peek(ObjectHeader &header);
    /// Takes the object of the last peek(), also where that fails. Views into it are valid until release(),
    /// skip(), peek() or close().
    /// @return false where the object is shorter than its fixed fields or its lengths do not fit, which is logged
    template <typename Object> bool read(Object &object)
    {
        const ObjectBytes bytes = take();
        return decode(bytes, object) || refused();
    }
    /// Lets the object of the last read() go.
    void release() noexcept;
    /// Passes over the object of the last peek().
    void skip();
    /// Whether something of what was passed so far could not be read; false without a file.
    bool isDamaged() const noexcept;
    void close();

private:
    ObjectBytes take();
    bool refused(); // logs; always false

    std::function<void()> m_pulse;
    std::unique_ptr<BlfStream> m_stream; // null while no log is open
};

} // namespace BLF
