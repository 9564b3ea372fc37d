// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// What the program says about itself in its log, its dialogs and the headers of its recordings.
namespace VciBuildInfo {
inline constexpr const char *programName = "TZBench";
inline constexpr const char *programVersion = "v1.6.0";
inline constexpr const char *creator = "zarnek";
inline constexpr const char *platform = "windows"; ///< a fixed mark in logs and recordings, whatever the system is
inline constexpr const char *applicationIcon = ":/resource/logo.ico";

const char *buildDate() noexcept; ///< of the build, as "Dec  3 2025"
const char *buildTime() noexcept; ///< of the build, as "15:18:37"
} // namespace VciBuildInfo
