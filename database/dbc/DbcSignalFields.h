// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/dbc/DbcScan.h"

struct DbcSharedTexts;
struct DbcSignal;

namespace DbcSignalFields {

/// Turns the texts behind a signal's colon into the fields of its record.
void apply(const DbcScan::SignalBody &body, DbcSharedTexts &texts, DbcSignal &signal);

} // namespace DbcSignalFields
