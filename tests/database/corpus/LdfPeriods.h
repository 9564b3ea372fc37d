// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/ldf/LdfFrame.h"
#include "database/ldf/LdfProtocolVersion.h"
#include "tests/database/corpus/LdfGolden.h"

#include <QStringList>

namespace tzcorpus {

/// A line for each period of a frame that is not what the schedule tables of the results tell.
QStringList comparePeriods(const LdfGolden &golden, const QString &name, const LdfFrame &actual,
                           LdfProtocolVersion version);

} // namespace tzcorpus
