// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/ldf/LdfParser.h"
#include "database/ldf/LdfScheduleTable.h"
#include "tests/database/ldf/LdfSource.h"

#include <initializer_list>
#include <utility>

/// A J2602 description of one slave that loads without a warning.
/// @param more  of the slave's attributes
LdfSource j2602Source(const char *nad = "0x61",
                      const char *more = "response_tolerance = 40 %;\n"
                                         "configurable_frames { Status1; CommandFrame; }",
                      const char *responseError = "Error1", const char *protocol = "\"J2602_3_1.0\"");
/// The same for ISO 17987; without more attributes its slave is warned of.
LdfSource isoSource(const char *attributes = "", const char *nad = "0x05", const char *responseError = "Error1");

/// Has the parser read the description, which must be taken.
void parseInto(Common::LdfParser &parser, const LdfSource &source);

/// A table of the type that the readers give to none; each slot is a frame's name and its delay in ms.
LdfScheduleTable diagnosticTable(std::initializer_list<std::pair<const char *, double>> slots_);
