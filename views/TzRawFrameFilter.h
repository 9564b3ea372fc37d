// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "views/TzViewIdFilter.h"

#include "vci/TzVciMessage.h"

#include <cstdint>

/// What a raw view displays of the frames that entered it. It touches neither counters nor recordings. UI thread.
struct TzRawFrameFilter
{
    static constexpr std::int8_t any = -1;             ///< of device and channel
    static constexpr std::uint8_t anyDirection = 0xFF; ///< of direction
    static constexpr std::uint8_t linReceived = 1;     ///< of direction in a LIN view
    static constexpr std::uint8_t linWritten = 16;     ///< of direction in a LIN view

    bool enabled = false;      ///< false while the filter bar is hidden: everything passes
    std::int8_t device = any;  ///< device index
    std::int8_t channel = any; ///< channel index
    /// CAN: a frame type (TzVciCanFrameType). LIN: linReceived or linWritten. Other values let every LIN frame pass.
    std::uint8_t direction = anyDirection;
    TzViewIdFilter ids;

    /// Whether anything is filtered at all.
    bool isActive() const noexcept;
    bool passesCan(const TzVciMessage &message) const noexcept;
    bool passesLin(const TzVciMessage &message) const noexcept;

private:
    bool passesOrigin(const TzVciMessage &message) const noexcept;
    bool passesLinDirection(std::uint8_t linDirection) const noexcept;
};
