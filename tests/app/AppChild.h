// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <optional>

/// What this test program does instead of testing when it is started with the name of a role: it plays tzbench in a
/// situation that a test cannot bring about from outside, or would not survive.
namespace tztest {

/// Closing hangs, with a limit of hangingCloseLimit for the end; quits at once.
inline constexpr const char *hangingCloseRole = "--hanging-close";
/// Opens a CAN channel of box 0 under the settings dialog and then prints channelOpenLine.
inline constexpr const char *channelUnderDialogRole = "--channel-under-dialog";

/// Opens a CAN channel of box 0, records what it receives into recordingPath and then prints recordingLine.
inline constexpr const char *recordingRole = "--recording";

/// Converts the BLF log conversionInput in the converter of the menu, slowly, and prints conversionLine at its first
/// frame.
inline constexpr const char *conversionRole = "--conversion";

inline constexpr std::chrono::milliseconds hangingCloseLimit{300};
inline constexpr const char *channelOpenLine = "channel open";
inline constexpr const char *recordingLine = "recording";
inline constexpr const char *recordingPath = "run.asc";
inline constexpr const char *conversionLine = "converting";
inline constexpr const char *conversionInput = "run.blf";
inline constexpr const char *conversionOutput = "run.csv";

/// The exit code of the role, nothing if the arguments name none.
std::optional<int> runAsChild(int argc, char **argv);

} // namespace tztest
