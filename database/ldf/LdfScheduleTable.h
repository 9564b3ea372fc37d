// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

#include <cstdint>
#include <vector>

/// Values of LdfScheduleTable::type. The name of a table gives its type; no name gives type 2 or 5.
namespace LdfScheduleTableType {
inline constexpr std::uint32_t ordinary = 1;
inline constexpr std::uint32_t timed = 2; ///< counts for the shortest period of a frame, not for the longest
inline constexpr std::uint32_t collisionResolving = 3;
inline constexpr std::uint32_t init = 4;
inline constexpr std::uint32_t diagnostic = 5;
inline constexpr std::uint32_t masterRequest = 6;
inline constexpr std::uint32_t slaveResponse = 7;
} // namespace LdfScheduleTableType

/// One slot: a frame, or (in an init table) a command with its arguments.
struct LdfScheduleEntry
{
    QString frameName;     ///< empty for a command
    double delay = 0.0;    ///< ms until the next slot
    QString command;       ///< empty for a frame
    QStringList arguments; ///< of the command
};

struct LdfScheduleTable
{
    QString name;
    std::uint32_t type = LdfScheduleTableType::ordinary;
    std::vector<LdfScheduleEntry> entries; ///< in file order
};
