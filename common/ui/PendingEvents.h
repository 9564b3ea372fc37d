// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace Common {

/// Handles the events that wait now, the user's included: for work that keeps the UI thread busy for long and calls
/// this again and again, so that windows go on painting. What the user may do meanwhile is the caller's to rule.
/// An order to quit that the toolkit has only posted (as it does once the last window is closed) is dropped with the
/// loop that begins here; one that was given by QCoreApplication::quit() is not. A caller that lets the last
/// window close meanwhile has to remember that itself.
/// @return false once the program has been told to end: the work should be given up
[[nodiscard]] bool handlePendingEvents();

} // namespace Common
