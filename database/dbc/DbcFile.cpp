// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcFile.h"

#include "common/Log.h"
#include "database/text/LogText.h"

#include <utility>

namespace {

constexpr std::uint32_t identifierMask = 0x1FFFFFFF;

} // namespace

void DbcFile::clear()
{
    *this = DbcFile();
}

void DbcFile::addNode(DbcNode node)
{
    m_nodePlaces.emplace(node.name, nodes.size());
    nodes.push_back(std::move(node));
}

void DbcFile::rebuildIndexes()
{
    m_messagePlaces.clear();
    m_signalPlaces.clear();
    m_nodePlaces.clear();
    m_messagePlaces.reserve(messages.size() + specialMessages.size());
    m_signalPlaces.reserve(messages.size() + specialMessages.size());
    for (std::size_t index = 0; index < messages.size(); ++index)
        indexMessage({false, index});
    for (std::size_t index = 0; index < specialMessages.size(); ++index)
        indexMessage({true, index});
    for (std::size_t index = 0; index < nodes.size(); ++index)
        m_nodePlaces.emplace(nodes[index].name, index);
}

void DbcFile::indexMessage(const MessagePlace &place)
{
    const DbcMessage &message = messageAt(place);
    m_messagePlaces.insert_or_assign(message.id, place);
    TextMap<SignalPlace> &places = m_signalPlaces[message.id];
    places.reserve(places.size() + message.signals.size());
    for (std::size_t index = 0; index < message.signals.size(); ++index) {
        const SignalPlace signalPlace{place, index};
        const auto [entry, isNew] = places.try_emplace(message.signals[index].name, signalPlace);
        if (isNew)
            continue;
        entry->second = signalPlace;
        if (!place.isSpecial) {
            Common::logWarning("Duplicate signal name {} in message {}", Common::LogText(message.signals[index].name),
                               message.id);
        }
    }
}

const DbcMessage &DbcFile::messageAt(const MessagePlace &place) const
{
    return place.isSpecial ? specialMessages[place.index] : messages[place.index];
}

const DbcMessage *DbcFile::findMessage(std::uint32_t number) const
{
    auto entry = m_messagePlaces.find(number);
    if (entry == m_messagePlaces.end())
        entry = m_messagePlaces.find(number & identifierMask);
    return entry == m_messagePlaces.end() ? nullptr : &messageAt(entry->second);
}

DbcMessage *DbcFile::findMessage(std::uint32_t number)
{
    return const_cast<DbcMessage *>(std::as_const(*this).findMessage(number));
}

const DbcSignal *DbcFile::signalAt(std::uint32_t id, QStringView name) const
{
    const auto places = m_signalPlaces.find(id);
    if (places == m_signalPlaces.end())
        return nullptr;
    const auto entry = places->second.find(name);
    return entry == places->second.end() ? nullptr : &messageAt(entry->second.message).signals[entry->second.index];
}

const DbcSignal *DbcFile::findSignal(std::uint32_t number, QStringView name) const
{
    const DbcSignal *signal = signalAt(number, name);
    return signal != nullptr ? signal : signalAt(number & identifierMask, name);
}

DbcSignal *DbcFile::findSignal(std::uint32_t number, QStringView name)
{
    return const_cast<DbcSignal *>(std::as_const(*this).findSignal(number, name));
}

const DbcNode *DbcFile::findNode(QStringView name) const
{
    const auto entry = m_nodePlaces.find(name);
    return entry == m_nodePlaces.end() ? nullptr : &nodes[entry->second];
}

DbcNode *DbcFile::findNode(QStringView name)
{
    return const_cast<DbcNode *>(std::as_const(*this).findNode(name));
}
