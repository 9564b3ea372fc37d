// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/ldf/LdfConfig.h"
#include "tests/database/corpus/LdfGolden.h"

#include <QString>
#include <QStringList>

namespace tzcorpus {

/// A line for every field in which @p actual differs from the results, but for the deliberate differences, which are
/// rules with their reasons. Counts the rules' use.
/// @param text  of the file that was read
QStringList compareLdf(const LdfGolden &golden, const QString &text, const LdfConfig &actual);

} // namespace tzcorpus
