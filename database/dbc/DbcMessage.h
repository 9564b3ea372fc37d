// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/dbc/DbcAttribute.h"
#include "database/dbc/DbcSignal.h"

#include <QString>

#include <cstdint>
#include <vector>

/// What a 29-bit identifier tells under J1939; valid where DbcMessage::isJ1939 is set.
struct DbcJ1939Info
{
    std::uint8_t priority = 0;
    std::uint32_t pgn = 0;
    std::uint8_t sourceAddress = 0;
    std::uint8_t destinationAddress = 0; ///< 0 for a broadcast format
    std::uint8_t pduType = 0;            ///< 1 addressed, 2 broadcast, 4 for PDU format 254
    bool isPf239 = false;
};

/// One `BO_` statement with its signals. A copyable value.
struct DbcMessage
{
    std::uint32_t id = 0; ///< without bit 31; a special message keeps the number as written
    QString name;
    std::uint8_t size = 0; ///< payload bytes
    QString transmitter;   ///< may be the pseudo node
    bool isExtended = false;
    bool isFd = false;
    bool isBrs = false;
    bool isRemote = false;
    std::vector<DbcSignal> signals; ///< in file order
    QString comment;
    std::vector<DbcAttributeValue> attributes;
    DbcJ1939Info j1939;
    bool isJ1939 = false;
    std::uint32_t cycleTime = 0; ///< ms; for users of the record, the parser leaves it 0
    std::uint8_t userFlag1 = 0;  ///< for users of the record, like the next two
    std::uint8_t userFlag2 = 0;
    QString note;
};
