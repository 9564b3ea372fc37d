// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciMessage.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace tztest {

/// Sets the record's and the frame's time, in units of 0.1 microsecond.
template <typename Frame> void setTime(TzVciMessage &message, Frame &frame, std::uint64_t ticks)
{
    message.timestamp = ticks;
    frame.timestampLow = static_cast<std::uint32_t>(ticks);
    frame.timestampHigh = static_cast<std::uint32_t>(ticks >> 32);
}

/// A received CAN frame of device 2, channel 3 as shown.
inline TzVciMessage canMessage(std::uint32_t id, const std::vector<std::uint8_t> &data, std::uint8_t flags = 0,
                               std::uint8_t frameType = TzVciCanFrameType::received, std::uint64_t ticks = 0)
{
    TzVciMessage message;
    message.deviceIndex = 2;
    message.channelIndex = 2;
    TzVciCanDataType &can = message.frame.can;
    can.canId = id;
    can.dataLength = static_cast<std::uint8_t>(data.size());
    can.flags = flags;
    can.frameType = frameType;
    std::copy(data.begin(), data.end(), can.data.begin());
    setTime(message, can, ticks);
    return message;
}

/// A LIN frame of device 2, channel 3 as shown, with the identifier 0x2A, its PID 0x6A and the checksum 0xC5.
inline TzVciMessage linMessage(const std::vector<std::uint8_t> &data, std::uint8_t direction = 0,
                               std::uint64_t ticks = 0)
{
    TzVciMessage message;
    message.deviceIndex = 2;
    message.channelIndex = 2;
    TzVciLinDataType lin;
    lin.linId = 0x2A;
    lin.protectedId = 0x6A;
    lin.checksum = 0xC5;
    lin.checksumType = 1;
    lin.linDirection = direction;
    lin.dataLength = static_cast<std::uint8_t>(data.size());
    std::copy(data.begin(), data.end(), lin.data.begin());
    setTime(message, lin, ticks);
    message.setLin(lin);
    return message;
}

/// Bytes 0xA0, 0xA1, ...
inline std::vector<std::uint8_t> risingBytes(std::size_t count)
{
    std::vector<std::uint8_t> bytes(count);
    for (std::size_t i = 0; i < count; ++i)
        bytes[i] = static_cast<std::uint8_t>(0xA0 + i);
    return bytes;
}

} // namespace tztest
