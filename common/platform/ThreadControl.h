// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

/// What the system lets a thread do to itself and the process to its priority. False: refused, nothing changed.
namespace Common::platform {

void nameThisThread(const char *name); ///< cut to 15 characters
std::string thisThreadIdText();        ///< the id as system tools show it
bool raiseProcessPriority();           ///< all threads that exist; true if none was refused

} // namespace Common::platform
