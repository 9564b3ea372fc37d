// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/integration/PlugProbe.h"

#include "vci/TzVciTypes.h"

#include <algorithm>

namespace tztest {

namespace {

constexpr std::uint64_t enoughFrames = 200;

bool isError(const TzVciMessage &message)
{
    return message.frame.can.frameType == TzVciCanFrameType::error;
}

} // namespace

PlugProbe::PlugProbe(TzVciDevice &device)
{
    device.subscribeCan(key(), [state = m_state](const std::vector<TzVciMessage> &batch) {
        if (state->canEnded || state->allEnded)
            ++state->lateCalls;
        state->frames += batch.size();
        state->errorFrames += static_cast<std::uint64_t>(std::count_if(batch.begin(), batch.end(), isError));
    });
    device.subscribeLin(key(), [state = m_state](const std::vector<TzVciMessage> &batch) {
        if (state->allEnded)
            ++state->lateCalls;
        state->linFrames += batch.size();
    });
    device.subscribeStatus(key(), [state = m_state](int /*deviceIndex*/, std::uint8_t cmd) {
        if (state->allEnded)
            ++state->lateCalls;
        if (cmd == VciStatus::deviceClosed)
            state->toldOfClose = true;
    });
}

bool PlugProbe::hasTraffic() const
{
    return m_state->frames >= enoughFrames && m_state->errorFrames > 0 && m_state->linFrames > 0;
}

void PlugProbe::unsubscribeCan(TzVciDevice &device)
{
    device.unsubscribeCan(key());
    m_state->canEnded = true;
}

void PlugProbe::noteClosed()
{
    m_state->allEnded = true;
}

} // namespace tztest
