// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcFile.h"

#include "common/Log.h"
#include "database/dbc/DbcIdentifier.h"
#include "database/text/LogText.h"

#include <bit>
#include <utility>

namespace {

std::uint32_t hashOf(QStringView name)
{
    return static_cast<std::uint32_t>(Common::hashOfText(name));
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
    indexMessages();
    const std::uint32_t count = messageCount();
    for (std::uint32_t place = 0; place < count; ++place)
        indexSignals(place);
    m_nodePlaces.clear();
    for (std::size_t index = 0; index < nodes.size(); ++index)
        m_nodePlaces.emplace(nodes[index].name, index);
}

void DbcFile::indexMessages()
{
    const std::uint32_t count = messageCount();
    m_identifiers.clear();
    m_identifiers.reserve(count);
    for (std::uint32_t place = 0; place < count; ++place) {
        const DbcMessage &message = messageAt(place);
        Identifier &identifier = m_identifiers[message.id];
        identifier.message = place;
        identifier.signalCount += static_cast<std::uint32_t>(message.signals.size());
    }
    std::size_t slotCount = 0;
    for (std::uint32_t place = 0; place < count; ++place) {
        Identifier &identifier = m_identifiers.find(messageAt(place).id)->second;
        if (identifier.signalCount == 0 || identifier.slotCount > 0)
            continue;
        identifier.firstSlot = slotCount;
        identifier.slotCount = std::bit_ceil(std::size_t{identifier.signalCount} * 2);
        slotCount += identifier.slotCount;
    }
    m_signalSlots.assign(slotCount, {});
}

void DbcFile::indexSignals(std::uint32_t place)
{
    const DbcMessage &message = messageAt(place);
    const bool isOrdinary = place < messages.size();
    const Identifier &identifier = m_identifiers.find(message.id)->second;
    for (std::uint32_t index = 0; index < message.signals.size(); ++index) {
        const QString &name = message.signals[index].name;
        const std::uint32_t hash = hashOf(name);
        SignalSlot &slot = m_signalSlots[slotOf(identifier, name, hash)];
        const bool isKnown = slot.isTaken();
        slot = {hash, place, slot.message == place ? slot.firstIndex : index, index};
        if (isKnown && isOrdinary)
            Common::logWarning("Duplicate signal name {} in message {}", Common::LogText(name), message.id);
    }
}

std::size_t DbcFile::slotOf(const Identifier &identifier, QStringView name, std::uint32_t hash) const
{
    const std::size_t mask = identifier.slotCount - 1;
    for (std::size_t offset = hash & mask;; offset = (offset + 1) & mask) {
        const SignalSlot &slot = m_signalSlots[identifier.firstSlot + offset];
        const bool isWanted =
            !slot.isTaken() || (slot.hash == hash && messageAt(slot.message).signals[slot.lastIndex].name == name);
        if (isWanted)
            return identifier.firstSlot + offset;
    }
}

const DbcFile::SignalSlot *DbcFile::findSlot(std::uint32_t id, QStringView name, std::uint32_t hash) const
{
    const auto entry = m_identifiers.find(id);
    if (entry == m_identifiers.end() || entry->second.slotCount == 0)
        return nullptr;
    const SignalSlot &slot = m_signalSlots[slotOf(entry->second, name, hash)];
    return slot.isTaken() ? &slot : nullptr;
}

const DbcMessage &DbcFile::messageAt(std::uint32_t place) const
{
    return place < messages.size() ? messages[place] : specialMessages[place - messages.size()];
}

std::uint32_t DbcFile::messageCount() const
{
    return static_cast<std::uint32_t>(messages.size() + specialMessages.size());
}

const DbcFile::Identifier *DbcFile::identifierOf(std::uint32_t number) const
{
    auto entry = m_identifiers.find(number);
    if (entry == m_identifiers.end())
        entry = m_identifiers.find(number & DbcIdentifier::mask);
    return entry == m_identifiers.end() ? nullptr : &entry->second;
}

const DbcMessage *DbcFile::findMessage(std::uint32_t number) const
{
    const Identifier *identifier = identifierOf(number);
    return identifier == nullptr ? nullptr : &messageAt(identifier->message);
}

DbcMessage *DbcFile::findMessage(std::uint32_t number)
{
    return const_cast<DbcMessage *>(std::as_const(*this).findMessage(number));
}

const DbcSignal *DbcFile::findSignal(std::uint32_t number, QStringView name) const
{
    const std::uint32_t hash = hashOf(name);
    const SignalSlot *slot = findSlot(number, name, hash);
    if (slot == nullptr)
        slot = findSlot(number & DbcIdentifier::mask, name, hash);
    return slot == nullptr ? nullptr : &messageAt(slot->message).signals[slot->lastIndex];
}

DbcSignal *DbcFile::findSignal(std::uint32_t number, QStringView name)
{
    return const_cast<DbcSignal *>(std::as_const(*this).findSignal(number, name));
}

DbcSignal *DbcFile::findFirstSignal(std::uint32_t number, QStringView name)
{
    const Identifier *identifier = identifierOf(number);
    if (identifier == nullptr)
        return nullptr;
    DbcMessage &message = const_cast<DbcMessage &>(messageAt(identifier->message));
    const SignalSlot *slot = findSlot(message.id, name, hashOf(name));
    return slot != nullptr && slot->message == identifier->message ? &message.signals[slot->firstIndex] : nullptr;
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
