// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// What a timing thread may ask of the system for itself. All calls concern the calling thread.
namespace Common::platform::ThreadScheduling {

/// Asks for real-time priority, low among the real-time priorities so that the system's own threads stay above.
/// @return false where the system does not grant it; the thread goes on as it was
bool requestRealTimePriority() noexcept;

/// Lets timed sleeps end at their deadline instead of up to 50 microseconds later. Has no effect on real-time threads,
/// whose sleeps are exact anyway.
void requestExactSleeps() noexcept;

/// Binds the thread to one of the processors that it may run on. Successive calls in the process take successive
/// processors, so that several timing threads spread out.
/// @return the processor, or -1 where the system refuses
int pinToProcessor() noexcept;

/// Takes the binding back: the thread may run wherever the process's main thread may.
void unpin() noexcept;

} // namespace Common::platform::ThreadScheduling
