// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/ldf/LdfSignal.h"
#include "tests/database/corpus/LdfGolden.h"

#include <QString>

namespace tzcorpus {

/// The signal as the reader is to give it: as the independent tools see it, changed by the rules that hold each
/// deliberate difference with its reason. Counts the rules' use.
/// @param text  of the file that was read
LdfSignal expectedSignal(const LdfGolden &golden, const QString &text, const GoldenLdfSignal &signal);

} // namespace tzcorpus
