// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

struct DbcFile;
struct DbcSignalMultiplexValue;

namespace DbcSignalMultiplexReader {

/// Stores the `SG_MUL_VAL_` statements and makes their signals multiplexed ones, by the first number of the first
/// range; which multiplexor, and what further ranges say, is kept in the record alone.
void readMultiplexValues(const QString &text, DbcFile &file);

/// False for a record that must not enter the file; logs why.
bool isValid(const DbcSignalMultiplexValue &record);

} // namespace DbcSignalMultiplexReader
