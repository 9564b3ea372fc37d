// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/simulator/BusFrame.h"

#include <cstdint>

namespace tzsim {

/// The identifier with its two parity bits (ISO 17987-3).
constexpr std::uint8_t linProtectedId(std::uint8_t id)
{
    const auto bit = [id](unsigned n) { return static_cast<unsigned>(id >> n) & 1U; };
    const unsigned parity0 = bit(0) ^ bit(1) ^ bit(2) ^ bit(4);
    const unsigned parity1 = (bit(1) ^ bit(3) ^ bit(4) ^ bit(5)) ^ 1U;
    return static_cast<std::uint8_t>((id & 0x3FU) | parity0 << 6 | parity1 << 7);
}

/// Diagnostic frames always carry the classic checksum, whatever the frame says.
constexpr bool linUsesClassicChecksum(const LinFrame &frame)
{
    return frame.checksumType == LinChecksum::classic || frame.id == 0x3C || frame.id == 0x3D;
}

/// Inverted sum with carry over the data, with the protected identifier in front for the enhanced kind. 0 for a frame
/// without data: nobody answered, so no checksum was seen.
constexpr std::uint8_t linChecksum(const LinFrame &frame)
{
    if (frame.length == 0)
        return 0;
    unsigned sum = linUsesClassicChecksum(frame) ? 0 : frame.protectedId.value_or(linProtectedId(frame.id));
    for (unsigned i = 0; i < frame.length; ++i) {
        sum += frame.data[i];
        if (sum > 0xFF)
            sum -= 0xFF;
    }
    return static_cast<std::uint8_t>(~sum);
}

} // namespace tzsim
