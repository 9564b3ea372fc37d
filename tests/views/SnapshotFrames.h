// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/views/ViewFrames.h"
#include "vci/TzVciCanDataType.h"

#include <numeric>
#include <vector>

namespace tztest {

inline TzVciMessage withFlags(std::uint8_t flags, TzVciMessage message)
{
    message.frame.can.flags = flags;
    return message;
}

/// A standard, an extended and a CAN FD frame, an error, one without data; of three channels and both directions.
inline std::vector<TzVciMessage> snapshotCanFrames()
{
    TzVciMessage longFrame = withFlags(TzVciCanFlag::formatMask, canMessage(0x7FF));
    longFrame.frame.can.dataLength = 64;
    std::iota(longFrame.frame.can.data.begin(), longFrame.frame.can.data.end(), std::uint8_t{0});
    return {
        at(1'234'560, canData({0x01, 0xAB}, canMessage(0x12))),
        at(20'000'000,
           from(0, 1,
                withFlags(TzVciCanFlag::extendedId,
                          canData({0, 1, 2, 3, 4, 5, 6, 7}, canMessage(0x18FF1234, TzVciCanFrameType::transmitted))))),
        at(30'000'010, from(3, 7, longFrame)),
        at(30'500'000, canData({0x00, 0x00, 0x00, 0x08}, canMessage(0, TzVciCanFrameType::error))),
        at(12'345'678'900, withFlags(TzVciCanFlag::remote, canMessage(0x5))),
    };
}

inline std::vector<TzVciMessage> snapshotLinFrames()
{
    return {
        at(1'234'560, linData({0x01, 0xAB}, linMessage(0x2))),
        at(20'000'000, from(1, 2, linData({0xFF}, linMessage(0x3C, TzVciLinDirection::masterWrite)))),
    };
}

} // namespace tztest
