// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringView>

#include <cstdint>
#include <unordered_map>

struct DbcFile;

/// Texts for raw values: `VAL_TABLE_`, and `VAL_` for a signal or, without a message number, for a table.
namespace DbcValueTableReader {

/// Enters every pair of a number and a quoted text; a later pair of the same number wins, a number beyond 32 bits is
/// passed over. A sign is not part of the number: `-1 "x"` has the key 1.
/// @return true if @p entries holds anything now
bool readPairs(QStringView text, std::unordered_map<std::uint32_t, QString> &entries);

void readValueTables(const QString &text, DbcFile &file);
/// Needs the messages and their indexes.
void readValueDescriptions(const QString &text, DbcFile &file);

} // namespace DbcValueTableReader
