// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

struct DbcFile;
struct DbcSignal;

namespace DbcSignalCheck {

/// False for a signal that must not enter its message. Logs why, and what is odd about one that may. The receivers of
/// an accepted signal that are no nodes yet become nodes.
bool accept(const DbcSignal &signal, DbcFile &file);

} // namespace DbcSignalCheck
