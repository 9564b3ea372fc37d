// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

/// Keeps what the toolkit complains of: a broken connection, a timer of a foreign thread. Any thread.
namespace tzsoak::ToolkitWarnings {

void install();
/// Warnings and worse, as far as they are not about what a platform without a screen cannot do.
std::vector<std::string> seen();

} // namespace tzsoak::ToolkitWarnings
