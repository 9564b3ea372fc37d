// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <vector>

namespace tzsim {

/// An even stream of frames on several channels of a box, for measurements. Each frame carries in its first four data
/// bytes (as far as they exist) a little-endian number that counts the channel's frames from 0, so that a reader finds
/// every loss.
struct LoadSpec
{
    double framesPerSecond = 1000; ///< of each channel
    std::vector<int> canChannels = {0};
    std::vector<int> linChannels{};
    std::uint8_t length = 8; ///< data bytes: 0 to 64 for CAN FD, cut to 8 for classic CAN and LIN
    std::uint8_t flags = 0;  ///< CanFlag values of the CAN frames
    std::uint32_t firstId = 0x100;
    std::uint32_t idCount = 16; ///< the identifiers go round from firstId
    std::uint64_t count = 0;    ///< frames of each channel after which the load ends; 0 for never
};

/// Traffic shaped like that of a vehicle: messages with cycle times, counters, ramps and waves.
struct SignalSpec
{
    std::vector<int> canChannels = {0};
    std::vector<int> linChannels = {0};
    bool fd = true;      ///< also CAN FD messages, on the channels that the host opened with CAN FD
    bool errors = false; ///< also an error frame now and then
};

/// The play-back of a recorded log.
struct ReplaySpec
{
    std::filesystem::path file{}; ///< candump log, or ASC; told apart by their content
    double speed = 1.0;           ///< 2.0 plays twice as fast; 0 as fast as the link takes it
    bool loop = false;
    /// Channel of the log (counted from 0) to CAN or LIN channel of the box. A channel of the log that is not named
    /// keeps its number. Frames of channels that the box does not have are left out.
    std::map<int, int> channelMap{};
};

} // namespace tzsim
