// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfSectionReaders.h"

#include "common/Log.h"
#include "database/ldf/LdfParser.h"
#include "database/text/LogText.h"

namespace Common {

void printLdfSummary(const LdfReading &reading)
{
    const LdfConfig &config = reading.config;
    logDebug("LDF Configuration Summary:");
    logDebug("  Protocol Version: {}", LogText(ldfProtocolVersionText(config.protocolVersion)));
    logDebug("  Bus Speed: {:.1f} kbps", config.busSpeed);
    logDebug("  Master Node: {}", LogText(config.master.name));
    logDebug("  Slave Nodes: {}", config.slaves.size());
    reading.rules.printProtocolSummary();
    reading.rules.printNodeSummary();
    logDebug("Frame Statistics:");
    logDebug("  Frames: {}", config.frames.size());
    logDebug("  Diagnostic Frames: {}", config.diagnosticFrames.size());
    logDebug("  Sporadic Frames: {}", config.sporadicFrames.size());
    logDebug("  Event Triggered Frames: {}", config.eventTriggeredFrames.size());
    logDebug("  Total Signals: {}", reading.signals.size());
    logDebug("  Schedule Tables: {}", config.scheduleTables.size());
}

} // namespace Common
