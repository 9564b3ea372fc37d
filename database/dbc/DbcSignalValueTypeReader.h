// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

struct DbcFile;
struct DbcSignalValueType;

namespace DbcSignalValueTypeReader {

/// Stores the `SIG_VALTYPE_` statements and gives the float signals among them their scaling and range. A signal's
/// valueType is left alone: whether it decodes as a float is settled by its `SG_` line.
void readValueTypes(const QString &text, DbcFile &file);

/// False for a record that must not enter the file; logs why.
bool isValid(const DbcSignalValueType &record);

} // namespace DbcSignalValueTypeReader
