// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace Common::LoggerResult {

// Results of a recorder's start().
inline constexpr int ok = 0;
inline constexpr int openFailed = -1; ///< no path, or the file cannot be opened or is locked by another recorder
inline constexpr int alreadyRunning = -2;
inline constexpr int headerFailed = -3; ///< the file was opened, but its header could not be written
inline constexpr int threadFailed = -4; ///< the system has no thread left

} // namespace Common::LoggerResult
