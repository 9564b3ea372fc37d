// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/dbc/DbcMessage.h"
#include "database/text/KeyedHash.h"

/// Messages of one file by DbcMessage::id; copies, independent of the parser's model.
using DbcMessageMap = Common::NumberMap<DbcMessage>;
