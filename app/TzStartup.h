// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/CrashHandler.h"

#include <chrono>
#include <functional>
#include <memory>

class TZBenchWindow;
class TzApplication;

/// The steps of the program's start and end, in the order in which main() takes them; a demonstration or a test takes
/// those that it needs. UI thread only.
namespace TzStartup {

/// A fatal fault from here on runs tzCrashHook().
void installCrashHandling();
/// What the toolkit must know before its application object exists: high-density displays, meta-types.
void prepareToolkit();
/// Icon, palette and style sheet.
void dressApplication(TzApplication &application);
/// Starts the log with the stored settings. A failure is shown in a message box, and the program goes on.
void startLog();
/// Starts the device scan and the loading of the databases that the last run held, without waiting for them.
void startBackgroundLoad();
/// The main window on the process's devices, shown maximised. A program that is told to end (by a signal or by the
/// toolkit) takes the window's close steps without a question; one that has not ended @p endLimit later goes the way of
/// a crash.
std::unique_ptr<TZBenchWindow>
showMainWindow(TzApplication &application,
               std::chrono::milliseconds endLimit = Common::CrashHandler::defaultTerminationLimit);
/// Runs @p work. An exception out of it runs the crash hook and is then shown in a message box.
/// @return what @p work returns, -1 after a standard exception, -2 after any other
int runGuarded(const std::function<int()> &work);
/// Ends what startBackgroundLoad() has started, should it still run (a database file in hand is read to its end), and
/// takes the crash hook out: a fault from here on ends without it.
void finish();

} // namespace TzStartup
