// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

struct DbcFile;
struct DbcMessage;

namespace DbcMessageCheck {

/// False for a message that must not enter the model. Logs why, and what is odd about a message that may.
bool isValid(const DbcMessage &message, const DbcFile &file);

} // namespace DbcMessageCheck
