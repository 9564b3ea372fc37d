// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/dbc/DbcAttribute.h"
#include "database/dbc/DbcMessage.h"
#include "database/dbc/DbcNode.h"
#include "database/dbc/DbcSignalMultiplexValue.h"
#include "database/dbc/DbcSignalValueType.h"
#include "database/dbc/DbcValueTable.h"

#include <QString>
#include <QStringList>
#include <QStringView>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <unordered_map>
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
    /// Lets a view look up a text without making one.
    struct TextHash
    {
        using is_transparent = void;
        std::size_t operator()(QStringView text) const noexcept { return qHash(text); }
    };
    struct TextEqual
    {
        using is_transparent = void;
        bool operator()(QStringView left, QStringView right) const noexcept { return left == right; }
    };
    template <typename T> using TextMap = std::unordered_map<QString, T, TextHash, TextEqual>;

    struct MessagePlace
    {
        bool isSpecial = false;
        std::uint32_t index = 0;
        bool operator==(const MessagePlace &) const = default;
    };
    /// A slot of the index of signals, which is one open-addressed table: files have hundreds of thousands of signals,
    /// and an allocation for each would cost more than reading it.
    struct SignalSlot
    {
        std::uint32_t id = 0;
        std::uint32_t hash = 0;
        MessagePlace message;
        std::uint32_t firstIndex = 0; ///< in that message
        std::uint32_t lastIndex = 0;
        bool isTaken = false;
    };

    void indexSignals(const MessagePlace &place);
    const MessagePlace *placeOf(std::uint32_t number) const;
    const DbcMessage &messageAt(const MessagePlace &place) const;
    /// The slot that holds the signal, or the free one where it belongs. There must be slots.
    std::size_t slotOf(std::uint32_t id, QStringView name, std::uint32_t hash) const;
    const SignalSlot *findSlot(std::uint32_t id, QStringView name) const;

    std::unordered_map<std::uint32_t, MessagePlace> m_messagePlaces;
    std::vector<SignalSlot> m_signalSlots; // none, or a power of two, at most half of them taken
    TextMap<std::size_t> m_nodePlaces;
};
