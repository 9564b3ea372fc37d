// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <chrono>
#include <cstdint>

namespace tzsim {

inline constexpr int maxBoxes = 16;
inline constexpr int maxChannels = 60; ///< of one family; a bus load report of more would not fit its 512 bytes

/// What a box is made of. Everything else about it is set by the host or through Box.
struct BoxConfig
{
    int index = 0;                                              ///< 0 to 15, fixes the address
    int canChannels = 2;                                        ///< 0 to maxChannels
    int linChannels = 1;                                        ///< 0 to maxChannels
    std::array<std::uint8_t, 4> firmwareVersion = {1, 2, 3, 4}; ///< most significant part first
    std::uint64_t clockOffset = 0;                              ///< device time at start(), in 0.1 microsecond
    /// Distance of two bus load reports while a CAN channel is open; 0 for none.
    std::chrono::milliseconds busLoadPeriod{1000};
    /// The box closes its channels when it heard nothing from the host for this long; 0 for never.
    std::chrono::milliseconds heartbeatTimeout{0};
};

} // namespace tzsim
