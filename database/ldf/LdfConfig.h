// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/ldf/LdfFrame.h"
#include "database/ldf/LdfNode.h"
#include "database/ldf/LdfProtocolVersion.h"
#include "database/ldf/LdfScheduleTable.h"

#include <QString>
#include <QStringList>

#include <map>
#include <vector>

/// All that is kept of one LIN description file. A plain value; copies share only what never changes: the texts'
/// buffers and the signals' encodings.
struct LdfConfig
{
    LdfProtocolVersion protocolVersion = LdfProtocolVersion::unknown;
    double busSpeed = 19.2;   ///< kbit/s
    QString channelName;      ///< "LIN" when the file has none
    QString fileRevision;     ///< empty when the file has none
    bool isBigEndian = false; ///< the file says so; payloads stay little-endian all the same
    LdfNode master;
    std::map<QString, LdfNode> slaves;
    std::map<QString, LdfFrame> frames; ///< unconditional frames, by name
    std::map<QString, LdfFrame> diagnosticFrames;
    std::map<QString, QStringList> sporadicFrames; ///< names of the frames that share the slot
    std::map<QString, LdfEventTriggeredFrame> eventTriggeredFrames;
    std::vector<LdfScheduleTable> scheduleTables; ///< in file order
};
