// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/simulator/ReplaySource.h"

#include "tools/simulator/Delivery.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace tzsim {

namespace {

constexpr std::size_t maxFramesPerRun = 1024;
constexpr auto lookForListeners = std::chrono::milliseconds(5);
constexpr auto pauseBetweenRounds = std::chrono::milliseconds(1);

} // namespace

ReplaySource::ReplaySource(const BoxConfig &box, const ReplaySpec &spec, ReplayLog log, Clock::time_point start)
    : m_spec(spec)
    , m_box(box.index)
    , m_start(start)
{
    std::set<ChannelRef> channels;
    for (ReplayLog::Entry &entry : log.entries) {
        const auto mapped = spec.channelMap.find(entry.channel);
        entry.channel = mapped == spec.channelMap.end() ? entry.channel : mapped->second;
        const bool can = std::holds_alternative<CanFrame>(entry.frame);
        if (entry.channel < 0 || entry.channel >= (can ? box.canChannels : box.linChannels))
            continue;
        channels.insert({box.index, can ? Family::can : Family::lin, entry.channel});
        m_entries.push_back(entry);
    }
    m_channels.assign(channels.begin(), channels.end());
}

ReplaySource::Clock::time_point ReplaySource::dueOf(std::size_t entry) const
{
    if (m_spec.speed <= 0)
        return m_start;
    const auto ns = std::llround(static_cast<double>(m_entries[entry].timeNs) / m_spec.speed);
    return m_start + std::chrono::nanoseconds(ns);
}

std::optional<ReplaySource::Clock::time_point> ReplaySource::nextDue() const
{
    if (m_next == m_entries.size())
        return std::nullopt;
    return m_started ? dueOf(m_next) : m_start;
}

bool ReplaySource::waitForListener(Clock::time_point now, const Delivery &delivery)
{
    m_started = std::any_of(m_channels.begin(), m_channels.end(),
                            [&](const ChannelRef &channel) { return delivery.anyoneListens(channel); });
    m_start = m_started ? now : now + lookForListeners;
    return m_started;
}

void ReplaySource::run(Clock::time_point now, Delivery &delivery)
{
    if (!m_started && !waitForListener(now, delivery))
        return;
    for (std::size_t i = 0; i < maxFramesPerRun && m_next < m_entries.size(); ++i, ++m_next) {
        const auto due = dueOf(m_next);
        if (due > now)
            return;
        const ReplayLog::Entry &entry = m_entries[m_next];
        const auto stamp = m_spec.speed > 0 ? due : now;
        if (const auto *can = std::get_if<CanFrame>(&entry.frame))
            delivery.canFromNode({m_box, Family::can, entry.channel}, *can, stamp);
        else
            delivery.linFromNode({m_box, Family::lin, entry.channel}, std::get<LinFrame>(entry.frame), stamp);
    }
    if (m_next == m_entries.size() && m_spec.loop) {
        m_start = (m_spec.speed > 0 ? dueOf(m_entries.size() - 1) : now) + pauseBetweenRounds;
        m_next = 0;
    }
}

} // namespace tzsim
