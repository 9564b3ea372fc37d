// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/text/KeyedHash.h"

#include <QString>

/// Raw value to text.
using DbcValueTexts = Common::NumberMap<QString>;
