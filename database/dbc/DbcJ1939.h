// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/dbc/DbcMessage.h"

#include <cstdint>

struct DbcFile;

namespace DbcJ1939 {

/// Takes a 29-bit identifier apart.
DbcJ1939Info infoOf(std::uint32_t id);

/// Marks the message as a J1939 one and stores its info, unless the group or the priority is impossible.
/// Logs what is wrong with it or with its transmitter.
/// @return true if it was marked
bool classify(DbcMessage &message, const DbcFile &file);

/// The checks behind classify(), for an info however it was made.
bool isValid(const DbcJ1939Info &info, const DbcMessage &message, const DbcFile &file);

} // namespace DbcJ1939
