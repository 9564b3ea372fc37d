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
        const auto [entry, isNew] = places.try_emplace(message.signals[index].name, SignalPlace{place, index, index});
        if (isNew)
            continue;
        SignalPlace &known = entry->second;
        known = {place, known.message == place ? known.firstIndex : index, index};
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

const DbcFile::MessagePlace *DbcFile::placeOf(std::uint32_t number) const
{
    auto entry = m_messagePlaces.find(number);
    if (entry == m_messagePlaces.end())
        entry = m_messagePlaces.find(number & identifierMask);
    return entry == m_messagePlaces.end() ? nullptr : &entry->second;
}

const DbcFile::SignalPlace *DbcFile::placeOf(std::uint32_t id, QStringView name) const
{
    const auto places = m_signalPlaces.find(id);
    if (places == m_signalPlaces.end())
        return nullptr;
    const auto entry = places->second.find(name);
    return entry == places->second.end() ? nullptr : &entry->second;
}

const DbcMessage *DbcFile::findMessage(std::uint32_t number) const
{
    const MessagePlace *place = placeOf(number);
    return place == nullptr ? nullptr : &messageAt(*place);
}

DbcMessage *DbcFile::findMessage(std::uint32_t number)
{
    return const_cast<DbcMessage *>(std::as_const(*this).findMessage(number));
}

const DbcSignal *DbcFile::findSignal(std::uint32_t number, QStringView name) const
{
    const SignalPlace *place = placeOf(number, name);
    if (place == nullptr)
        place = placeOf(number & identifierMask, name);
    return place == nullptr ? nullptr : &messageAt(place->message).signals[place->lastIndex];
}

DbcSignal *DbcFile::findSignal(std::uint32_t number, QStringView name)
{
    return const_cast<DbcSignal *>(std::as_const(*this).findSignal(number, name));
}

DbcSignal *DbcFile::findFirstSignal(std::uint32_t number, QStringView name)
{
    const MessagePlace *messagePlace = placeOf(number);
    if (messagePlace == nullptr)
        return nullptr;
    DbcMessage &message = const_cast<DbcMessage &>(messageAt(*messagePlace));
    const SignalPlace *place = placeOf(message.id, name);
    return place != nullptr && place->message == *messagePlace ? &message.signals[place->firstIndex] : nullptr;
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
