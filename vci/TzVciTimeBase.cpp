// SPDX-License-Identifier: GPL-3.0-or-later
#include "vci/TzVciTimeBase.h"

TzVciTimeBase::TzVciTimeBase(Common::UnifiedTimeManager &manager)
    : m_manager(manager)
{
}

void TzVciTimeBase::registerDevice(int deviceIndex, std::uint64_t baseTime)
{
    const std::lock_guard lock(m_mutex);
    const Base base{baseTime, Clock::now()};
    if (!m_reference)
        setReference(base.moment);
    m_bases.insert_or_assign(deviceIndex, base);
    place(deviceIndex, base);
}

void TzVciTimeBase::reset()
{
    const std::lock_guard lock(m_mutex);
    setReference(Clock::now());
    for (const auto &[deviceIndex, base] : m_bases)
        place(deviceIndex, base);
}

void TzVciTimeBase::setReference(Clock::time_point moment)
{
    m_manager.initialize(std::chrono::system_clock::now(), m_manager.getTimeScaleFactor());
    m_reference = moment;
}

void TzVciTimeBase::place(int deviceIndex, const Base &base)
{
    const std::chrono::duration<double> offset = base.moment - *m_reference;
    m_manager.registerDevice(deviceIndex, base.deviceTime, offset.count());
}
