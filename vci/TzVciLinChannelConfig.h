// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciChannelConfig.h"

#include <QString>

/// Settings of one LIN channel.
struct TzVciLinChannelConfig : TzVciChannelConfig
{
    TzVciLinChannelConfig()
        : TzVciChannelConfig(19200)
    {
    }

    TzVciSetting<QString> type{QStringLiteral("Master")}; ///< node role, "Master" or "Slave"
    TzVciSetting<QString> ldfFile{QString()};             ///< LDF file bound to the channel; empty: none

    bool isMaster() const { return type == QStringLiteral("Master"); }
};
