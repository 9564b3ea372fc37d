// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace tzsoak {

/// The simulated boxes in a process of their own, so that their processor time is told apart from the program's. Obeys
/// commands on the standard input, one a line, and answers each on the standard output with a line that begins with
/// "ok" or "error". Ends at the end of the input, and so with the process that gives the commands.
///
///     start N, stop N              the traffic of box N
///     silence N 0|1, late N MS     nothing is sent; replies come late
///     junk N BYTES, cut N BYTES, empty N, burst N CHANNEL FRAMES
///     refuse N PROTOCOL CHANNEL    the next opening of the channel
///     vanish N, return N
///     sent                         for each box the CAN and the LIN frames sent so far
///
/// @return the process's result
int runBoxesProcess();

} // namespace tzsoak
