// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>

/// One `SG_MUL_VAL_` statement as read.
struct DbcSignalMultiplexValue
{
    std::uint32_t messageId = 0; ///< as written, bit 31 included
    QString signalName;
    QString multiplexorName;
    QString ranges; ///< such as "0-3, 8-8"
};
