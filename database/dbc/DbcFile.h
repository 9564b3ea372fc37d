// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/dbc/DbcAttribute.h"
#include "database/dbc/DbcMessage.h"
#include "database/dbc/DbcNode.h"
#include "database/dbc/DbcSignalMultiplexValue.h"
#include "database/dbc/DbcSignalValueType.h"
#include "database/dbc/DbcValueTable.h"
#include "database/text/KeyedHash.h"

#include <QString>
#include <QStringList>
#include <QStringView>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

/// The whole content of one file: a copyable value; the indexes hold positions, so a copy's look-ups find the copy.
///
/// Threads: none of its own; concurrent reading is safe, writing is the owner's affair.
struct DbcFile
{
    QString version;
    QStringList newSymbols;
    std::vector<DbcValueTable> valueTables;
    std::vector<DbcNode> nodes;
    std::vector<DbcMessage> messages;
    std::vector<DbcMessage> specialMessages; ///< see DbcNames::isSpecialMessage()
    QStringList comments;                    ///< of the file itself: written, never read
    std::vector<DbcAttributeDefinition> attributeDefinitions;
    std::vector<DbcAttributeValue> attributes; ///< of the file itself
    std::vector<DbcSignalValueType> signalValueTypes;
    std::vector<DbcSignalMultiplexValue> signalMultiplexValues;

    void clear();

    /// Appends a node and enters it in the index; the caller has made sure that the name is new.
    void addNode(DbcNode node);

    /// Makes the look-ups below fit the lists. A later message of the same id, and a later signal of the same name,
    /// win; each such signal of an ordinary message is logged. To be called after any change to the lists.
    void rebuildIndexes();

    // Look-ups by the number of a statement: as written first, then without bits 29 to 31. Null where there is nothing;
    // the pointers hold until the lists change.
    DbcMessage *findMessage(std::uint32_t number);
    const DbcMessage *findMessage(std::uint32_t number) const;
    DbcSignal *findSignal(std::uint32_t number, QStringView name);
    const DbcSignal *findSignal(std::uint32_t number, QStringView name) const;
    /// The first signal of that name in the message that findMessage() finds; findSignal() finds the last.
    DbcSignal *findFirstSignal(std::uint32_t number, QStringView name);
    DbcNode *findNode(QStringView name);
    const DbcNode *findNode(QStringView name) const;

private:
    /// What an identifier stands for. Its signals have slots of their own, next to each other, which are an
    /// open-addressed table: files speak of their messages in one order throughout, so what is needed next lies near
    /// what was needed last. Files have hundreds of thousands of signals; an allocation for each would cost more than
    /// reading it.
    struct Identifier
    {
        std::uint32_t message = 0;     ///< the last one of that id; see messageAt()
        std::uint32_t signalCount = 0; ///< of all messages of that id
        std::size_t firstSlot = 0;
        std::size_t slotCount = 0; ///< none, or a power of two, at most half of them taken
    };
    struct SignalSlot
    {
        static constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();

        std::uint32_t hash = 0; // of the name
        std::uint32_t message = none;
        std::uint32_t firstIndex = 0; // in that message
        std::uint32_t lastIndex = 0;

        bool isTaken() const { return message != none; }
    };

    /// The ordinary messages and behind them the special ones, under one count.
    const DbcMessage &messageAt(std::uint32_t place) const;
    std::uint32_t messageCount() const;
    void indexMessages();
    void indexSignals(std::uint32_t place);
    const Identifier *identifierOf(std::uint32_t number) const;
    /// The slot that holds the signal, or the free one where it belongs. The identifier must have slots.
    std::size_t slotOf(const Identifier &identifier, QStringView name, std::uint32_t hash) const;
    const SignalSlot *findSlot(std::uint32_t id, QStringView name, std::uint32_t hash) const;

    Common::NumberMap<Identifier> m_identifiers;
    std::vector<SignalSlot> m_signalSlots;
    Common::TextMap<std::size_t> m_nodePlaces;
};
