// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/simulator/ReplayLog.h"

#include <string_view>

namespace tzsim {

/// Reads CAN, CAN FD, remote, error and LIN frames of an ASC text, in hexadecimal and decimal base, with absolute and
/// relative times. Also the lines in which this project's own recorders differ. All else is passed over; lines that
/// begin with a time and are no known event count as skipped.
ReplayLog readAsc(std::string_view text);

} // namespace tzsim
