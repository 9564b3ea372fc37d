// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/simulator/ReplayLog.h"

#include <string_view>

namespace tzsim {

/// Reads the log format of candump: "(seconds) interface id#data", "id##<flags>data" for CAN FD, "id#R" for remote
/// frames, and error frames by the flag in the identifier. The number at the end of an interface's name is its channel.
ReplayLog readCandump(std::string_view text);

} // namespace tzsim
