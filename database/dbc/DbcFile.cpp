// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcFile.h"

#include "common/Log.h"
#include "database/text/LogText.h"

#include <bit>
#include <numeric>
#include <utility>

namespace {

constexpr std::uint32_t identifierMask = 0x1FFFFFFF;

std::uint32_t hashOf(std::uint32_t id, QStringView name)
{
    constexpr std::uint64_t spread = 0x9E3779B97F4A7C15; // any odd number of well mixed bits
    return static_cast<std::uint32_t>(((std::uint64_t{id} << 32 | qHash(name)) * spread) >> 32);
}

std::size_t countSignals(const std::vector<DbcMessage> &messages)
{
    return std::accumulate(messages.begin(), messages.end(), std::size_t{0},
                           [](std::size_t sum, const DbcMessage &message) { return sum + message.signals.size(); });
}

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
    m_nodePlaces.clear();
    m_messagePlaces.reserve(messages.size() + specialMessages.size());
    const std::size_t signalCount = countSignals(messages) + countSignals(specialMessages);
    m_signalSlots.assign(signalCount == 0 ? 0 : std::bit_ceil(signalCount * 2), {});
    const auto indexMessages = [this](const std::vector<DbcMessage> &list, bool isSpecial) {
        for (std::uint32_t index = 0; index < list.size(); ++index) {
            m_messagePlaces.insert_or_assign(list[index].id, MessagePlace{isSpecial, index});
            indexSignals({isSpecial, index});
        }
    };
    indexMessages(messages, false);
    indexMessages(specialMessages, true);
    for (std::size_t index = 0; index < nodes.size(); ++index)
        m_nodePlaces.emplace(nodes[index].name, index);
}

void DbcFile::indexSignals(const MessagePlace &place)
{
    const DbcMessage &message = messageAt(place);
    for (std::uint32_t index = 0; index < message.signals.size(); ++index) {
        const QString &name = message.signals[index].name;
        const std::uint32_t hash = hashOf(message.id, name);
        SignalSlot &slot = m_signalSlots[slotOf(message.id, name, hash)];
        const bool isKnown = slot.isTaken;
        const bool isOfThisMessage = isKnown && slot.message == place;
        slot = {message.id, hash, place, isOfThisMessage ? slot.firstIndex : index, index, true};
        if (isKnown && !place.isSpecial)
            Common::logWarning("Duplicate signal name {} in message {}", Common::LogText(name), message.id);
    }
}

std::size_t DbcFile::slotOf(std::uint32_t id, QStringView name, std::uint32_t hash) const
{
    const std::size_t mask = m_signalSlots.size() - 1;
    std::size_t index = hash & mask;
    for (; m_signalSlots[index].isTaken; index = (index + 1) & mask) {
        const SignalSlot &slot = m_signalSlots[index];
        if (slot.hash == hash && slot.id == id && messageAt(slot.message).signals[slot.lastIndex].name == name)
            break;
    }
    return index;
}

const DbcFile::SignalSlot *DbcFile::findSlot(std::uint32_t id, QStringView name) const
{
    if (m_signalSlots.empty())
        return nullptr;
    const SignalSlot &slot = m_signalSlots[slotOf(id, name, hashOf(id, name))];
    return slot.isTaken ? &slot : nullptr;
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
    const SignalSlot *slot = findSlot(number, name);
    if (slot == nullptr)
        slot = findSlot(number & identifierMask, name);
    return slot == nullptr ? nullptr : &messageAt(slot->message).signals[slot->lastIndex];
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
    const SignalSlot *slot = findSlot(message.id, name);
    return slot != nullptr && slot->message == *messagePlace ? &message.signals[slot->firstIndex] : nullptr;
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
