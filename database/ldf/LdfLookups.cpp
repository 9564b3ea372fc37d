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
    m_askedTables.clear();
    m_askedPublishers.clear();
}

const LdfSignal *LdfLookups::frameSignal(const QString &name)
{
    if (!m_frameSignals) {
        m_frameSignals.emplace();
        for (const auto &[frameName, frame] : m_config.frames) {
            for (const auto &[signalName, signal] : frame.signals)
                m_frameSignals->emplace(signalName, &signal); // the first one stays
        }
    }
    const auto signal = m_frameSignals->find(name);
    return signal == m_frameSignals->end() ? nullptr : signal->second;
}

bool LdfLookups::isConfigurable(const QString &frameName)
{
    if (!m_configurableFrames) {
        m_configurableFrames.emplace();
        for (const auto &[slaveName, slave] : m_config.slaves)
            m_configurableFrames->insert(slave.configurableFrames.begin(), slave.configurableFrames.end());
    }
    return m_configurableFrames->count(frameName) > 0;
}

LdfLookups::Subscriptions LdfLookups::gatherSubscriptions() const
{
    Subscriptions gathered;
    TextMap<std::size_t> numbers;
    for (const auto &[frameName, frame] : m_config.frames) {
        SignalNumbers &inFrame = gathered.byFrame[&frame];
        for (const auto &[signalName, signal] : frame.signals) {
            const auto [number, isNew] = numbers.try_emplace(signalName, numbers.size());
            inFrame.push_back(number->second);
            if (!isNew) // a signal has the same subscribers in every frame
                continue;
            for (const QString &subscriber : signal.subscribers)
                gathered.byNode[subscriber].push_back(number->second);
        }
        std::sort(inFrame.begin(), inFrame.end());
    }
    return gathered;
}

const LdfLookups::Subscriptions &LdfLookups::subscriptions()
{
    if (!m_subscriptions)
        m_subscriptions = gatherSubscriptions();
    return *m_subscriptions;
}

const LdfLookups::SignalNumbers &LdfLookups::signalsReceivedBy(const QString &node)
{
    static const SignalNumbers none;
    const auto received = subscriptions().byNode.find(node);
    return received == subscriptions().byNode.end() ? none : received->second;
}

bool LdfLookups::hasAnyOf(const LdfFrame &frame, const SignalNumbers &signalNumbers)
{
    const auto inFrame = subscriptions().byFrame.find(&frame);
    if (inFrame == subscriptions().byFrame.end())
        return false;
    // Through the shorter list: many nodes may ask about one frame of many signals, and one node about many frames.
    const bool isFrameShorter = inFrame->second.size() < signalNumbers.size();
    const SignalNumbers &shorter = isFrameShorter ? inFrame->second : signalNumbers;
    const SignalNumbers &longer = isFrameShorter ? signalNumbers : inFrame->second;
    return std::any_of(shorter.begin(), shorter.end(), [&longer](std::size_t number) {
        return std::binary_search(longer.begin(), longer.end(), number);
    });
}

void LdfLookups::gatherDelays()
{
    m_longestDelays.emplace();
    for (const LdfScheduleTable &table : m_config.scheduleTables) {
        double longest = 0.0;
        for (const LdfScheduleEntry &entry : table.entries)
            longest = std::max(longest, entry.delay);
        m_longestDelays->emplace(table.name, longest); // the first table of that name stays
    }
}

std::optional<double> LdfLookups::longestDelay(const QString &tableName)
{
    // Asked for every member in every slot of an event-triggered frame, always with that frame's own text.
    const auto asked = m_askedTables.find(tableName.constData());
    if (asked != m_askedTables.end())
        return asked->second.answer;
    if (!m_longestDelays)
        gatherDelays();
    const auto delay = m_longestDelays->find(tableName);
    const auto longest = delay == m_longestDelays->end() ? std::nullopt : std::optional(delay->second);
    m_askedTables.emplace(tableName.constData(), Asked<std::optional<double>>{tableName, longest});
    return longest;
}

LdfLookups::Publisher LdfLookups::publisherOf(const LdfFrame &frame)
{
    // Asked several times in every slot of the frame, always with the frame's own text.
    const QString &name = frame.publisher;
    const auto asked = m_askedPublishers.find(name.constData());
    if (asked != m_askedPublishers.end())
        return asked->second.answer;
    const auto slave = m_config.slaves.find(name);
    const Publisher publisher{name == m_config.master.name, slave == m_config.slaves.end() ? nullptr : &slave->second};
    m_askedPublishers.emplace(name.constData(), Asked<Publisher>{name, publisher});
    return publisher;
}

} // namespace Common
