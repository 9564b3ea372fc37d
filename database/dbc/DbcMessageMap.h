// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/dbc/DbcMessage.h"

#include <cstdint>
#include <unordered_map>

/// Messages of one file by DbcMessage::id; copies, independent of the parser's model.
using DbcMessageMap = std::unordered_map<std::uint32_t, DbcMessage>;
