// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcMessageCheck.h"

#include "common/Log.h"
#include "database/dbc/DbcFile.h"
#include "database/dbc/DbcIdentifier.h"
#include "database/dbc/DbcNames.h"
#include "database/text/LogText.h"

using Common::LogText;

namespace DbcMessageCheck {

namespace {

constexpr std::uint8_t largestSize = 64;
constexpr std::uint32_t diagnosticFormat = 254; // identifier bits above 15

bool lacksTransmitter(const DbcMessage &message, const DbcFile &file)
{
    return DbcNames::isRealNode(message.transmitter) && file.findNode(message.transmitter) == nullptr;
}

bool isValidDiagnostic(const DbcMessage &message, const DbcFile &file)
{
    if (message.name.isEmpty()) {
        Common::logError("Diagnostic message name cannot be empty for ID {}", message.id);
        return false;
    }
    if (message.name.startsWith(QLatin1String("DM3")))
        return true;
    if (message.size > largestSize) {
        Common::logError("Invalid diagnostic message size {} for message {} ({})", message.size, LogText(message.name),
                         message.id);
        return false;
    }
    if (lacksTransmitter(message, file)) {
        Common::logWarning("Transmitter node {} not found for diagnostic message {} ({})", LogText(message.transmitter),
                           LogText(message.name), message.id);
    }
    return true;
}

void logOddities(const DbcMessage &message, const DbcFile &file)
{
    if (lacksTransmitter(message, file)) {
        Common::logWarning("Transmitter node {} not found for message {} ({})", LogText(message.transmitter),
                           LogText(message.name), message.id);
    }
    if (message.isBrs && !message.isFd) {
        Common::logWarning("Message {} ({}) has BRS enabled but is not a CAN FD message.", LogText(message.name),
                           message.id);
    }
    if (message.isRemote && message.size > 0) {
        Common::logWarning("Remote frame message {} ({}) should have a size of 0, but has {}.", LogText(message.name),
                           message.id, message.size);
    }
}

} // namespace

bool isValid(const DbcMessage &message, const DbcFile &file)
{
    if (DbcNames::isSpecialMessage(message.name)) {
        Common::logInfo("Found special message {} with ID {}", LogText(message.name), message.id);
        return true;
    }
    const bool isDiagnostic =
        message.name.startsWith(QLatin1String("DM")) || (message.isJ1939 && message.id >> 16 == diagnosticFormat);
    if (isDiagnostic)
        return isValidDiagnostic(message, file);
    if (message.id > DbcIdentifier::largest) {
        Common::logInfo("Message ID {} exceeds maximum value {}", message.id, DbcIdentifier::largest);
        return false;
    }
    if (message.name.isEmpty()) {
        Common::logError("Message name cannot be empty for ID {}", message.id);
        return false;
    }
    if (message.size > largestSize) {
        Common::logError("Invalid message size {} for message {} ({})", message.size, LogText(message.name),
                         message.id);
        return false;
    }
    logOddities(message, file);
    return true;
}

} // namespace DbcMessageCheck
