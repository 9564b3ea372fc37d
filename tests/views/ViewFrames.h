// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciMessage.h"

#include <cstdint>
#include <initializer_list>

namespace tztest {

/// A received classic frame of device 0, channel 0.
inline TzVciMessage canMessage(std::uint32_t id, std::uint8_t frameType = TzVciCanFrameType::received)
{
    TzVciMessage message;
    message.frame.can.canId = id;
    message.frame.can.frameType = frameType;
    return message;
}

/// A frame of device 0, channel 0.
inline TzVciMessage linMessage(std::uint8_t id, std::uint8_t direction = TzVciLinDirection::masterRead)
{
    TzVciLinDataType lin;
    lin.linId = id;
    lin.linDirection = direction;
    TzVciMessage message;
    message.setLin(lin);
    return message;
}

inline TzVciMessage from(std::uint8_t device, std::uint8_t channel, TzVciMessage message)
{
    message.deviceIndex = device;
    message.channelIndex = channel;
    return message;
}

/// @param ticks  0.1 microsecond
inline TzVciMessage at(std::uint64_t ticks, TzVciMessage message)
{
    message.timestamp = ticks;
    return message;
}

inline TzVciMessage canData(std::initializer_list<std::uint8_t> bytes, TzVciMessage message)
{
    message.frame.can.dataLength = static_cast<std::uint8_t>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), message.frame.can.data.begin());
    return message;
}

inline TzVciMessage linData(std::initializer_list<std::uint8_t> bytes, TzVciMessage message)
{
    message.frame.lin.dataLength = static_cast<std::uint8_t>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), message.frame.lin.data.begin());
    return message;
}

} // namespace tztest
