// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>

/// One `SIG_VALTYPE_` statement as read.
struct DbcSignalValueType
{
    std::uint32_t messageId = 0; ///< as written, bit 31 included
    QString signalName;
    std::uint16_t type = 0; ///< a DbcValueType
};
