// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciCanChannelConfig.h"
#include "vci/TzVciLinChannelConfig.h"

#include <QString>

#include <cstdint>
#include <vector>

/// What the store knows of one device. The channel vectors keep their size once the device is in the store, which is
/// what keeps pointers to their elements valid.
struct TzVciDeviceConfig
{
    std::uint8_t reserved = 0;
    bool isOpen = false;                            ///< set by the device alone
    QString localIP;                                ///< local address to bind to; empty lets the system route
    std::vector<TzVciCanChannelConfig> canChannels; ///< the channel index is the vector index
    std::vector<TzVciLinChannelConfig> linChannels;

    TzVciDeviceConfig() = default;
    /// A device as the discovery finds it: that many channels with default settings.
    TzVciDeviceConfig(std::size_t canChannelCount, std::size_t linChannelCount)
        : canChannels(canChannelCount)
        , linChannels(linChannelCount)
    {
    }
};
