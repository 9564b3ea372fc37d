// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciDropReporter.h"

#include "common/Log.h"

void TzVciDropReporter::update(std::uint32_t dropped, Clock::time_point now)
{
    if (dropped != m_reported && now >= m_nextReport)
        report(dropped, now);
}

void TzVciDropReporter::finish(std::uint32_t dropped)
{
    if (dropped != m_reported)
        report(dropped, Clock::now());
    m_reported = 0;
}

void TzVciDropReporter::report(std::uint32_t dropped, Clock::time_point now)
{
    const std::uint32_t lost = dropped - m_reported; // right across the wrap
    m_reported = dropped;
    m_nextReport = now + std::chrono::seconds(1);
    Common::logWarning("Lost {} datagrams from {} on this host: the receive buffer was full.", lost, m_peer);
}
