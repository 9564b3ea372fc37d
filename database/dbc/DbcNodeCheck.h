// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

struct DbcFile;

namespace DbcNodeCheck {

/// Appends a node of that name unless it is the pseudo node, is known, or is no name; logs the latter two.
/// @return true if it was appended
bool addIfValid(const QString &name, DbcFile &file);

} // namespace DbcNodeCheck
