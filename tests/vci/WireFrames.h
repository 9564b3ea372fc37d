// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <initializer_list>
#include <vector>

namespace tztest {

/// A frame as a device sends it, written by hand here so that the encoder under test has no part in it.
inline std::vector<std::uint8_t> deviceFrame(std::uint8_t protocol, std::uint8_t command, std::uint8_t channel,
                                             std::uint8_t param, const std::vector<std::uint8_t> &payload)
{
    const auto low = static_cast<std::uint8_t>(payload.size() & 0xFF);
    const auto high = static_cast<std::uint8_t>(payload.size() >> 8);
    std::vector<std::uint8_t> frame{0x55, 0xAA, protocol, command, channel, param, low, high};
    frame.insert(frame.end(), payload.begin(), payload.end());
    frame.push_back(0);
    return frame;
}

inline std::vector<std::uint8_t> joined(std::initializer_list<std::vector<std::uint8_t>> parts)
{
    std::vector<std::uint8_t> all;
    for (const auto &part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

} // namespace tztest
