// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfLookups.h"

#include <algorithm>

namespace Common {

void LdfLookups::clear()
{
    m_frameSignals.reset();
    m_configurableFrames.reset();
    m_subscriptions.reset();
    m_longestDelays.reset();
}

const LdfSignal *LdfLookups::frameSignal(const QString &name)
{
    if (!m_frameSignals) {
        m_frameSignals.emplace();
        for (const auto &[frameName, frame] : m_config.frames) {
            for (const auto &[signalName, signal] : frame.signals) {
                if (!m_frameSignals->contains(signalName))
                    m_frameSignals->insert(signalName, &signal);
            }
        }
    }
    return m_frameSignals->value(name, nullptr);
}

bool LdfLookups::isConfigurable(const QString &frameName)
{
    if (!m_configurableFrames) {
        m_configurableFrames.emplace();
        for (const auto &[slaveName, slave] : m_config.slaves) {
            for (const QString &name : slave.configurableFrames)
                m_configurableFrames->insert(name);
        }
    }
    return m_configurableFrames->contains(frameName);
}

bool LdfLookups::isSubscriber(const QString &node, const LdfFrame &frame)
{
    if (!m_subscriptions) {
        m_subscriptions.emplace();
        QSet<QString> seen; // a signal has the same subscribers in every frame
        for (const auto &[frameName, each] : m_config.frames) {
            for (const auto &[signalName, signal] : each.signals) {
                if (seen.contains(signalName))
                    continue;
                seen.insert(signalName);
                for (const QString &subscriber : signal.subscribers)
                    (*m_subscriptions)[subscriber].insert(signalName);
            }
        }
    }
    const auto received = m_subscriptions->constFind(node);
    return received != m_subscriptions->constEnd() &&
           std::any_of(frame.signals.begin(), frame.signals.end(),
                       [&](const auto &each) { return received->contains(each.first); });
}

std::optional<double> LdfLookups::longestDelay(const QString &tableName)
{
    if (!m_longestDelays) {
        m_longestDelays.emplace();
        for (const LdfScheduleTable &table : m_config.scheduleTables) {
            double longest = 0.0;
            for (const LdfScheduleEntry &entry : table.entries)
                longest = std::max(longest, entry.delay);
            if (!m_longestDelays->contains(table.name))
                m_longestDelays->insert(table.name, longest);
        }
    }
    const auto delay = m_longestDelays->constFind(tableName);
    return delay == m_longestDelays->constEnd() ? std::nullopt : std::optional(delay.value());
}

} // namespace Common
