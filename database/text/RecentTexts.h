// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/text/KeyedHash.h"

#include <QString>
#include <QStringView>

#include <array>
#include <utility>

namespace Common {

/// Lets records share what files repeat: a unit, the name of an attribute, a list of receivers. It remembers what a
/// limited number of texts were made into and forgets those that others push out, so it stays small whatever the file
/// holds; whether something is shared is a matter of memory and time alone.
///
/// Not for several threads at once.
template <typename Value> class RecentTexts
{
public:
    /// What @p make makes of @p text, from memory where it has been asked lately; for an empty text Value().
    /// @param make  takes a const QString &, which a value that is a text can share
    template <typename Make> const Value &valueOf(QStringView text, Make make)
    {
        Entry &entry = m_entries[hashOfText(text) % m_entries.size()];
        if (entry.text != text) {
            QString kept = text.toString();
            entry.value = make(std::as_const(kept));
            entry.text = std::move(kept); // last: where make() throws, the entry must not pass for this text's
        }
        return entry.value;
    }

private:
    struct Entry
    {
        QString text;
        Value value = {};
    };

    std::array<Entry, 256> m_entries; // each text has one place, which others share
};

} // namespace Common
