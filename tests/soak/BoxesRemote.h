// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProcess>
#include <QString>

#include <array>
#include <cstdint>
#include <optional>

#include "tests/soak/SoakPlan.h"

namespace tzsoak {

/// Frames that the boxes have sent, or that have been received of them, since the start.
struct FrameCounts
{
    struct OfBox
    {
        std::uint64_t can = 0;
        std::uint64_t lin = 0;

        bool operator==(const OfBox &) const = default;
    };
    std::array<OfBox, boxCount> boxes{};

    std::uint64_t can() const;
    std::uint64_t lin() const;
};

/// The process of the simulated boxes, as seen from the one that commands it. @see runBoxesProcess for the commands.
/// UI thread. The first failure stays: error() tells of it, and all later commands fail as well.
class BoxesRemote
{
public:
    BoxesRemote() = default;
    ~BoxesRemote();

    /// Starts this program anew with @p argument, and waits until the boxes are there.
    bool start(const QString &argument);
    /// Gives a command and waits for its answer, which comes within milliseconds.
    bool command(const QString &text);
    std::optional<FrameCounts> sent();
    int processId() const { return static_cast<int>(m_process.processId()); }
    const QString &error() const { return m_error; }

private:
    std::optional<QString> answer(const QString &to);

    QProcess m_process;
    QString m_error;
};

} // namespace tzsoak
