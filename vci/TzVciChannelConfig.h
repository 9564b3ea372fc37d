// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciSetting.h"

#include <cstdint>

/// Settings of one channel, edited in place through TzVciDeviceStore::channelConfig() and read by the device when it
/// opens the channel. Each value may be read and written from any thread; a value changed while the channel opens takes
/// effect now or at the next opening.
struct TzVciChannelConfig
{
    TzVciChannelConfig() = default;
    explicit TzVciChannelConfig(std::uint32_t bitRate)
        : baudRate(bitRate)
    {
    }
    TzVciChannelConfig(const TzVciChannelConfig &) = default;
    TzVciChannelConfig &operator=(const TzVciChannelConfig &) = default;
    virtual ~TzVciChannelConfig() = default;

    TzVciSetting<bool> isOpen{false};         ///< set by the device alone
    TzVciSetting<std::uint32_t> baudRate{0u}; ///< nominal bit rate in bit/s
};
