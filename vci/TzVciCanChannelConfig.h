// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciChannelConfig.h"

#include <QString>

/// Settings of one CAN channel.
struct TzVciCanChannelConfig : TzVciChannelConfig
{
    TzVciCanChannelConfig()
        : TzVciChannelConfig(500000)
    {
    }

    TzVciSetting<QString> type{QStringLiteral("CANFD")};      ///< "CAN", "CANFD" or "CANFDBRS"
    TzVciSetting<std::uint32_t> fdBaudRate{2000000u};         ///< data-phase bit rate in bit/s
    TzVciSetting<std::uint8_t> nominalSeg1{std::uint8_t{31}}; ///< nominal time segment 1, in time quanta; not saved
    TzVciSetting<std::uint8_t> nominalSeg2{std::uint8_t{8}};  ///< nominal time segment 2; not saved
    TzVciSetting<std::uint8_t> dataSeg1{std::uint8_t{15}};    ///< data time segment 1; not saved
    TzVciSetting<std::uint8_t> dataSeg2{std::uint8_t{4}};     ///< data time segment 2; not saved
    TzVciSetting<bool> terminalResistorEnabled{true};         ///< reaches the device on CAN FD channels only

    /// Whether the device is given the bit timing and the data-phase rate when the channel opens.
    bool isFd() const { return type.value().startsWith(QLatin1String("CANFD")); }
};
