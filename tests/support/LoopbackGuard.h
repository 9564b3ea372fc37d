// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace tztest {

/// First call of every test program: gives the process a loopback network of its own (127.x.y, from the process id),
/// and ends the process with a clear message where the network that results is not loopback.
void requireLoopbackNetwork();

} // namespace tztest
