// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace tzcorpus {

/// What the whole run has compared, printed at its end.
struct DbcTotals
{
    long files = 0;
    long refused = 0;
    long messages = 0;
    long signals = 0;
    long frames = 0;
    long values = 0;
    long encoded = 0;
    long saved = 0;
    long merged = 0;
};

} // namespace tzcorpus
