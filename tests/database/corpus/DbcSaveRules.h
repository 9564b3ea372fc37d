// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/dbc/DbcFile.h"

namespace tzcorpus {

/// What reading a saved file is to give for @p file: the same, but for what the written form loses, each loss being a
/// rule with its reason. Counts the rules' use.
DbcFile expectedAfterSave(DbcFile file);

} // namespace tzcorpus
