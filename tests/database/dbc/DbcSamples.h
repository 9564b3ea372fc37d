// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/dbc/DbcFile.h"

#include <QString>

#include <cstdint>
#include <utility>
#include <vector>

namespace tztest {

/// An unsigned Intel signal of 8 bits with the range 0 to 255, without anything special.
inline DbcSignal makeSignal(const QString &name, std::uint16_t startBit = 0)
{
    DbcSignal signal;
    signal.name = name;
    signal.startBit = startBit;
    signal.size = 8;
    signal.maximum = 255.0;
    return signal;
}

/// A message of 8 bytes from the node "Ecu".
inline DbcMessage makeMessage(std::uint32_t id, const QString &name, std::vector<DbcSignal> signalList = {})
{
    DbcMessage message;
    message.id = id;
    message.name = name;
    message.size = 8;
    message.transmitter = QStringLiteral("Ecu");
    message.signals = std::move(signalList);
    return message;
}

inline DbcNode makeNode(const QString &name)
{
    DbcNode node;
    node.name = name;
    return node;
}

} // namespace tztest
