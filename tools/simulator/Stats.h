// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <span>
#include <string>
#include <vector>

namespace tzsim {

class Box;

/// All counters as one JSON object; README.md lists the keys.
std::string formatStatsJson(std::span<const Box *const> boxes);
/// All counters as lines for people, one for each box and each channel that carried or could carry anything.
std::string formatStatsText(std::span<const Box *const> boxes);

} // namespace tzsim
