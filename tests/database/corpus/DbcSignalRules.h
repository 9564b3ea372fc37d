// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/dbc/DbcSignal.h"
#include "tests/database/corpus/DbcGolden.h"
#include "tests/database/corpus/DbcText.h"

#include <QStringList>

namespace tzcorpus {

/// What is expected of one signal, on its way through the rules.
struct SignalCase
{
    const TextSignal *text = nullptr;
    const GoldenSignal *golden = nullptr; ///< null where there are no results
    DbcSignal expected;
    bool isLost = false; ///< the reader is to leave it out
};

/// The signal as the independent tools see it; @p golden may be null.
SignalCase signalCase(const TextSignal &text, const GoldenSignal *golden);

/// Changes what is expected by every rule about signals.
void applySignalRules(SignalCase &signal);

/// The limits that a signal without a range gets.
void deriveRange(DbcSignal &signal);

/// Whether the limits as written, with the signal's factor, offset and size, make the reader take it for a float, and
/// for which kind (0: none).
std::uint8_t floatKindByRange(const DbcSignal &signal, const QStringList &range);

} // namespace tzcorpus
