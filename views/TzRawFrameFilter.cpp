// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/TzRawFrameFilter.h"

bool TzRawFrameFilter::isActive() const noexcept
{
    return enabled && (device != any || channel != any || direction != anyDirection || ids.hasText());
}

bool TzRawFrameFilter::passesCan(const TzVciMessage &message) const noexcept
{
    if (!isActive())
        return true;
    if (!passesOrigin(message))
        return false;
    if (direction != anyDirection && direction != message.frame.can.frameType)
        return false;
    return ids.passes(message.frame.can.canId);
}

bool TzRawFrameFilter::passesLin(const TzVciMessage &message) const noexcept
{
    if (!isActive())
        return true;
    return passesOrigin(message) && ids.passes(message.frame.lin.linId) &&
           passesLinDirection(message.frame.lin.linDirection);
}

bool TzRawFrameFilter::passesOrigin(const TzVciMessage &message) const noexcept
{
    return (device == any || device == message.deviceIndex) && (channel == any || channel == message.channelIndex);
}

bool TzRawFrameFilter::passesLinDirection(std::uint8_t linDirection) const noexcept
{
    const bool written = (linDirection & TzVciLinDirection::writeBit) != 0;
    if (direction == linReceived)
        return !written;
    if (direction == linWritten)
        return written;
    return true;
}
