// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/soak/LinkLedger.h"

#include "vci/TzVciDevice.h"

namespace tzsoak {

void LinkLedger::watch(TzVciDevice &device)
{
    const auto key = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(this));
    const auto box = static_cast<std::size_t>(device.deviceIndex());
    device.subscribeCan(key, [counters = m_counters, box](const std::vector<TzVciMessage> &batch) {
        (*counters)[box].can.fetch_add(batch.size(), std::memory_order_relaxed);
    });
    device.subscribeLin(key, [counters = m_counters, box](const std::vector<TzVciMessage> &batch) {
        (*counters)[box].lin.fetch_add(batch.size(), std::memory_order_relaxed);
    });
}

FrameCounts LinkLedger::counts() const
{
    FrameCounts counts;
    for (std::size_t box = 0; box < counts.boxes.size(); ++box)
        counts.boxes[box] = {(*m_counters)[box].can.load(), (*m_counters)[box].lin.load()};
    return counts;
}

} // namespace tzsoak
