// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/ldf/LdfNode.h"
#include "database/ldf/LdfSignal.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <map>

/// Values of LdfFrame::type.
namespace LdfFrameType {
inline constexpr std::uint32_t unconditional = 0;
inline constexpr std::uint32_t eventTriggered = 1;
inline constexpr std::uint32_t sporadic = 2;
inline constexpr std::uint32_t diagnostic = 3;
} // namespace LdfFrameType

/// One frame of a LIN cluster.
struct LdfFrame
{
    QString name;
    std::uint8_t id = 0;                  ///< frame identifier, 0 to 0x3F
    std::uint8_t size = 0;                ///< bytes
    std::uint32_t type = 0;               ///< LdfFrameType
    QString publisher;                    ///< name of the master or of a slave
    std::map<QString, LdfSignal> signals; ///< by name, each copy with its own startBit
    double minPeriod = 0.0;               ///< ms, from the schedule tables; 0 when none tells
    double maxPeriod = 0.0;               ///< ms
    bool isEventTriggered = false;        ///< an event-triggered frame lists it
    double responseTolerance = LdfNodeDefault::responseTolerancePercent; ///< percent; the publisher's, for J2602
    QString comment;                                                     ///< left empty by the reader
    bool isMasterFrame = false;                                          ///< the master publishes it
};

/// Several frames that share one slot; collisions are resolved by a schedule table.
struct LdfEventTriggeredFrame
{
    QString name;
    QString collisionTable; ///< name of a schedule table
    std::int32_t id = 0;
    QStringList frames; ///< names of unconditional frames
};
