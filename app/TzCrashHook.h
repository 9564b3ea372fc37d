// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Lets go of everything that must not outlive the program: closes all devices, so that no channel stays on its bus and
/// nothing goes on transmitting, gives the log a second to drain and stops it.
///
/// Runs on a fatal fault (on the thread "tz-crash-hook") and on an exception that reached main(). It may run twice.
void tzCrashHook();
