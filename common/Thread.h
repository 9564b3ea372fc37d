// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace Common {

/// Names the calling thread as debuggers and `top -H` show it, cut to 15 characters, and gives it the alternate signal
/// stack on which a stack overflow can be reported. First call of every thread of the program.
void setThreadName(const char *name);

} // namespace Common
