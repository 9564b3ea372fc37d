// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

struct DbcFile;
struct DbcValueTable;

/// Texts for raw values: `VAL_TABLE_`, and `VAL_` for a signal or, without a message number, for a table.
namespace DbcValueTableReader {

/// False for a table of `VAL_TABLE_` that must not enter the file; logs why, and that one which may has no entries.
bool isAcceptable(const DbcValueTable &table, bool isNameTaken);

void readValueTables(const QString &text, DbcFile &file);
/// Needs the messages and their indexes.
void readValueDescriptions(const QString &text, DbcFile &file);

} // namespace DbcValueTableReader
