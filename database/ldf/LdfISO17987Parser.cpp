// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfISO17987Parser.h"

#include "common/Log.h"
#include "database/ldf/LdfSections.h"
#include "database/ldf/LdfStatements.h"
#include "database/text/LogText.h"

#include <algorithm>
#include <optional>

namespace Common {
namespace {

constexpr std::int32_t functionMaximum = 0xFFFF;
constexpr std::int32_t lowestNad = 1;
constexpr std::int32_t highestNad = 126;
constexpr int bitsPerByte = 10; // start bit, data, stop bit
constexpr std::uint8_t highestMasterId = 63;
constexpr std::uint8_t lowestSlaveId = 32;
constexpr std::uint8_t highestSlaveId = 63;
constexpr std::uint8_t masterRequestId = 60;
constexpr std::uint8_t slaveResponseId = 61;
constexpr std::uint8_t maximumFrameSize = 8;    // bytes
constexpr std::uint16_t maximumSignalSize = 64; // bits
constexpr std::uint16_t responseErrorSize = 1;  // bits
constexpr double shortestResponseMs = 0.0;      // between a master request and its slave response
constexpr double longestDiagnosticDelayMs = 1000.0;
constexpr double diagnosticPeriodMs = 10.0;
constexpr double highestMinTimeMs = 100.0;     // for P2_min and ST_min
constexpr double highestTimeoutMs = 360'000.0; // for N_As and N_Cr

bool isIsoNode(const LdfNode &node)
{
    return node.protocol.contains(QLatin1String("ISO17987"), Qt::CaseInsensitive);
}

bool isNad(std::int32_t nad)
{
    return nad >= lowestNad && nad <= highestNad;
}

void checkMinTime(const LdfNode &node, const char *name, double timeMs, double defaultMs)
{
    if (!(timeMs >= 0.0 && timeMs <= highestMinTimeMs))
        logWarning("ISO17987 node {} {} {:.1f} ms out of range [{:.1f}, {:.1f}], using default ({:.1f} ms)",
                   LogText(node.name), name, timeMs, 0.0, highestMinTimeMs, defaultMs);
}

void checkTimeout(const LdfNode &node, const char *name, double timeMs, double defaultMs)
{
    if (!(timeMs > 0.0 && timeMs <= highestTimeoutMs))
        logWarning("ISO17987 node {} {} {:.1f} ms out of range (0, {:.1f}], using default ({:.1f} ms)",
                   LogText(node.name), name, timeMs, highestTimeoutMs, defaultMs);
}

// The lines speak of a default, yet the node keeps what its file says.
void checkTiming(const LdfNode &node)
{
    checkMinTime(node, "P2_min", node.p2Min, LdfNodeDefault::p2MinMs);
    checkMinTime(node, "ST_min", node.stMin, LdfNodeDefault::stMinMs);
    checkTimeout(node, "N_As_timeout", node.nAsTimeout, LdfNodeDefault::nAsTimeoutMs);
    checkTimeout(node, "N_Cr_timeout", node.nCrTimeout, LdfNodeDefault::nCrTimeoutMs);
}

} // namespace

bool LdfISO17987Parser::parseProtocolConfig(const QString &attributesText, LdfNode &node)
{
    if (!isIsoNode(node))
        return true;
    const LdfMatch match = matchLdfFaultStateSignals(attributesText);
    if (match)
        node.faultStateSignals.append(ldfWordList(match[1]));
    else
        logWarning("ISO17987 node {} does not have fault_state_signals configured", LogText(node.name));
    return true;
}

bool LdfISO17987Parser::validateNodeConfig(const LdfNode &node)
{
    checkProductId(node, functionMaximum);
    if (isIsoNode(node)) {
        checkNad(node);
        checkSignals(node);
        checkTiming(node);
    }
    return true;
}

void LdfISO17987Parser::checkNad(const LdfNode &node) const
{
    if (!isNad(node.configuredNad))
        logWarning("Node {} has NAD 0x{:02X} outside recommended range [0x{:02X}, 0x{:02X}]", LogText(node.name),
                   node.configuredNad, lowestNad, highestNad);
    if (!isNad(node.initialNad))
        logWarning("Node {} initial NAD 0x{:02X} out of range [0x{:02X}, 0x{:02X}]", LogText(node.name),
                   node.initialNad, lowestNad, highestNad);
}

void LdfISO17987Parser::checkSignals(const LdfNode &node)
{
    if (!node.responseError.isEmpty()) {
        const LdfSignal *signal = lookups().frameSignal(node.responseError);
        if (signal == nullptr)
            logWarning("Response error signal {} not found in frames for node {}", LogText(node.responseError),
                       LogText(node.name));
        else if (signal->size != responseErrorSize)
            logWarning("Response error signal {} should be 1 bit in node {}", LogText(node.responseError),
                       LogText(node.name));
    }
    for (const QString &name : node.faultStateSignals) {
        if (lookups().frameSignal(name) == nullptr)
            logWarning("Fault state signal {} not found in frames for node {}", LogText(name), LogText(node.name));
    }
}

bool LdfISO17987Parser::validateFrame(const LdfFrame &frame)
{
    return checkFrameId(frame) && checkFrameSizes(frame);
}

bool LdfISO17987Parser::checkFrameId(const LdfFrame &frame)
{
    const bool isMasters = isPublishedByMaster(frame);
    if (isMasters && frame.id > highestMasterId) {
        logError("Master frame {} has invalid ID 0x{:02X} (must be <= 0x{:02X})", LogText(frame.name), frame.id,
                 highestMasterId);
        return false;
    }
    if (!isMasters && (frame.id < lowestSlaveId || frame.id > highestSlaveId) &&
        !lookups().isConfigurable(frame.name)) {
        logError("Slave frame {} has invalid ID 0x{:02X} (must be 0x{:02X}-0x{:02X} or configurable)",
                 LogText(frame.name), frame.id, lowestSlaveId, highestSlaveId);
        return false;
    }
    if (frame.id == masterRequestId && !isMasters) {
        logError("Diagnostic master request frame {} must be published by master", LogText(frame.name));
        return false;
    }
    if (frame.id == slaveResponseId && isMasters) {
        logError("Diagnostic slave response frame {} cannot be published by master", LogText(frame.name));
        return false;
    }
    return true;
}

bool LdfISO17987Parser::checkFrameSizes(const LdfFrame &frame) const
{
    if (frame.size > maximumFrameSize) {
        logError("ISO17987 frame {} exceeds maximum length of {} bytes", LogText(frame.name), maximumFrameSize);
        return false;
    }
    for (const auto &[name, signal] : frame.signals) {
        if (signal.size > maximumSignalSize) {
            logError("Signal {} exceeds maximum length of {} bits", LogText(name), maximumSignalSize);
            return false;
        }
    }
    if ((frame.id == masterRequestId || frame.id == slaveResponseId) && frame.size != maximumFrameSize) {
        logError("ISO17987 diagnostic frame {} must be {} bytes", LogText(frame.name), maximumFrameSize);
        return false;
    }
    return true;
}

bool LdfISO17987Parser::validateScheduleTable(const LdfScheduleTable &table)
{
    if (table.type == LdfScheduleTableType::diagnostic && !checkDiagnosticTable(table))
        return false;
    m_acceptedTables.append(table.name);
    m_tableAccepted = true;
    return true;
}

void LdfISO17987Parser::forgetFile()
{
    m_acceptedTables.clear();
    m_tableAccepted = false;
}

bool LdfISO17987Parser::checkDiagnosticTable(const LdfScheduleTable &table) const
{
    std::optional<double> requestMs;
    bool hasResponse = false;
    for (const LdfScheduleEntry &entry : table.entries) {
        if (entry.frameName == QLatin1String("MasterReq")) {
            requestMs = entry.delay;
        } else if (entry.frameName == QLatin1String("SlaveResp")) {
            hasResponse = true;
            const double responseMs = entry.delay - requestMs.value_or(0.0);
            if (responseMs < shortestResponseMs) {
                logError("Diagnostic response time {:.1f} ms is less than minimum P2 time {:.1f} ms", responseMs,
                         shortestResponseMs);
                return false;
            }
            if (responseMs > m_p2MaxTime) {
                logError("Diagnostic response time {:.1f} ms exceeds maximum P2 time {:.1f} ms", responseMs,
                         m_p2MaxTime);
                return false;
            }
        }
    }
    if (!requestMs || !hasResponse) {
        logError("Diagnostic schedule table {} must contain both MasterReq and SlaveResp frames", LogText(table.name));
        return false;
    }
    for (const LdfScheduleEntry &entry : table.entries) {
        if (entry.delay > longestDiagnosticDelayMs) {
            logError("ISO17987 diagnostic table {} entry delay {:.1f} ms exceeds 1000ms", LogText(table.name),
                     entry.delay);
            return false;
        }
    }
    return true;
}

bool LdfISO17987Parser::updateFrameTiming(LdfFrame &frame)
{
    if (isPublishedByMaster(frame))
        return true;
    frame.minPeriod = std::max(frame.minPeriod, responseTimeMs(frame));
    if (frame.type == LdfFrameType::diagnostic)
        frame.minPeriod = diagnosticPeriodMs;
    return true;
}

void LdfISO17987Parser::updateEventTriggeredFrame(LdfFrame &frame, const LdfEventTriggeredFrame &eventFrame)
{
    if (!isPublishedByMaster(frame)) {
        frame.minPeriod = std::max(frame.minPeriod, responseTimeMs(frame));
        if (frame.isEventTriggered)
            frame.minPeriod = std::max(frame.minPeriod, m_p2MaxTime);
    }
    takeCollisionDelay(frame, eventFrame);
}

double LdfISO17987Parser::responseTimeMs(const LdfFrame &frame)
{
    if (isPublishedByMaster(frame))
        return 0.0;
    static const LdfNode unknown;
    const LdfNode *slave = publishingSlave(frame);
    const LdfNode &publisher = slave == nullptr ? unknown : *slave;
    return bitTimeMs() * frame.size * bitsPerByte + publisher.timeBase + publisher.jitter + publisher.p2Min;
}

void LdfISO17987Parser::printProtocolSummary()
{
    logInfo("ISO17987 Specific Configuration:");
    logInfo("  P2 Max Time: {:.1f} ms", m_p2MaxTime);
    logInfo("  P2* Max Time: {:.1f} ms", m_p2StarMaxTime);
    logInfo("  P3 Max Time: {:.1f} ms", m_p3MaxTime);
}

void LdfISO17987Parser::printNodeSummary()
{
    LdfParser::printNodeSummary();
    for (const auto &[name, slave] : config().slaves) {
        logInfo("    Supplier ID: 0x{:04X}", slave.supplierId);
        logInfo("    Function ID: 0x{:02X}", slave.functionId);
        logInfo("    Variant: 0x{:02X}", slave.variantId);
        logInfo("    P2 min: {:.1f} ms", slave.p2Min);
    }
}

} // namespace Common
