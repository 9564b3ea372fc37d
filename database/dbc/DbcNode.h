// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/dbc/DbcAttribute.h"

#include <QString>

#include <cstdint>
#include <vector>

/// A node of `BU_`, or a receiver that `BU_` does not name.
struct DbcNode
{
    QString name;
    QString comment;
    std::vector<DbcAttributeValue> attributes;
    std::uint8_t address = 255;
    std::vector<std::uint8_t> claimedAddresses; ///< J1939; the parser leaves it empty
    bool isJ1939 = false;                       ///< the parser leaves it false
};
