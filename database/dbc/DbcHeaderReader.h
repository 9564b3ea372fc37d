// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

struct DbcFile;

/// What stands at the head of a file: `VERSION`, `NS_`, `BU_`.
namespace DbcHeaderReader {

void readVersion(const QString &text, DbcFile &file);
/// @return false where there is no `NS_` block; an empty one is read
bool readNewSymbols(const QString &text, DbcFile &file);
void readNodes(const QString &text, DbcFile &file);

} // namespace DbcHeaderReader
