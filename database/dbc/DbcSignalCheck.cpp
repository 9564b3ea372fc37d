// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcSignalCheck.h"

#include "common/Log.h"
#include "database/dbc/DbcFile.h"
#include "database/dbc/DbcNames.h"
#include "database/dbc/DbcNodeCheck.h"
#include "database/text/LogText.h"

using Common::LogText;

namespace DbcSignalCheck {

namespace {

constexpr std::uint16_t largestSize = 64;
constexpr std::uint16_t largestStartBit = 511; // of 64 bytes

bool hasValidSize(const DbcSignal &signal)
{
    // Version texts are described as one signal as long as the text.
    return signal.name.startsWith(QLatin1String("ExtendedVersion")) || (signal.size > 0 && signal.size <= largestSize);
}

void addReceivers(const DbcSignal &signal, DbcFile &file)
{
    for (const QString &receiver : signal.receivers) {
        if (receiver == DbcNames::pseudoNode || file.findNode(receiver) != nullptr)
            continue;
        if (DbcNodeCheck::addIfValid(receiver, file))
            Common::logDebug("Added new receiver node {} for signal {}", LogText(receiver), LogText(signal.name));
    }
}

} // namespace

bool accept(const DbcSignal &signal, DbcFile &file)
{
    if (signal.name.isEmpty()) {
        Common::logError("Signal name cannot be empty");
        return false;
    }
    if (!hasValidSize(signal)) {
        Common::logError("Invalid signal size {} for signal {}", signal.size, LogText(signal.name));
        return false;
    }
    if (signal.startBit > largestStartBit) {
        Common::logError("Invalid start bit {} for signal {}", signal.startBit, LogText(signal.name));
        return false;
    }
    if (signal.factor == 0.0 && signal.offset == 0.0) {
        Common::logWarning("Both factor and offset are zero for signal {}:({},{})", LogText(signal.name), signal.factor,
                           signal.offset);
    }
    if (signal.minimum > signal.maximum) {
        Common::logError("Invalid value range [{}, {}] for signal {}", signal.minimum, signal.maximum,
                         LogText(signal.name));
        return false;
    }
    addReceivers(signal, file);
    return true;
}

} // namespace DbcSignalCheck
