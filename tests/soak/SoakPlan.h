// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

/// What the soak run plays, and by what it judges.
namespace tzsoak {

// ---- the bench: 16 boxes, each with a classic CAN, a CAN FD and a LIN channel
inline constexpr int boxCount = 16;
inline constexpr int keeperBox = 0; ///< is left alone, so that the drains never stop and the counters never start anew
inline constexpr int classicChannel = 0;
inline constexpr int fdChannel = 1;
inline constexpr int canChannels = 2;
inline constexpr int linChannels = 1;

// ---- traffic: 60 % of what each bus can carry, without stuff bits
inline constexpr double busLoad = 0.6;
inline constexpr double classicFrameSeconds = 111 / 500e3;          ///< 8 bytes, standard identifier, 500 kbit/s
inline constexpr double fdFrameSeconds = 30 / 500e3 + 548 / 2000e3; ///< 64 bytes, bit rate switch, 500 k and 2 Mbit/s
inline constexpr double linFrameSeconds = 124 / 19200.0;            ///< 8 bytes, 19.2 kbit/s
inline constexpr double classicFramesPerSecond = busLoad / classicFrameSeconds;
inline constexpr double fdFramesPerSecond = busLoad / fdFrameSeconds;
inline constexpr double linFramesPerSecond = busLoad / linFrameSeconds;
inline constexpr double framesPerSecond =
    boxCount * (classicFramesPerSecond + fdFramesPerSecond + linFramesPerSecond); ///< some 74 000
inline constexpr std::chrono::milliseconds errorFramePeriod{200};                 ///< of each box
inline constexpr std::uint8_t fdLength = 64;
inline constexpr int maxFramesPerDatagram = 58; ///< 1472 bytes of the shortest records

// ---- what happens, and how often
inline constexpr std::chrono::milliseconds shortestActionPause{50};
inline constexpr std::chrono::milliseconds longestActionPause{500};
inline constexpr std::chrono::milliseconds shortestFaultPause{1000};
inline constexpr std::chrono::milliseconds longestFaultPause{4000};
inline constexpr int mostFaultsAtOnce = 3;
inline constexpr std::size_t burstFrames = 10'000;

// ---- what is judged
inline constexpr std::chrono::milliseconds samplePeriod{1000};
inline constexpr std::chrono::milliseconds longestFreeze{1000}; ///< of the event loop, beyond what it waited for boxes
// A view keeps the memory of the longest queue that it ever had, some 15 MiB for two seconds of waiting for a lost box:
// it takes minutes until each of the views has been through that.
inline constexpr std::chrono::minutes longRun{10};
inline constexpr double mostMemoryGrowthMiB = 12;      ///< of a long run
inline constexpr double mostEarlyMemoryGrowthMiB = 20; ///< of a shorter one
inline constexpr double mostDescriptorGrowth = 2;      ///< a box more or less is open at the moment

} // namespace tzsoak
