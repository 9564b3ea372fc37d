// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfJ2602Parser.h"

#include "common/Log.h"
#include "database/text/KeyedHash.h"
#include "database/text/LogText.h"
#include "database/text/Numbers.h"
#include "database/text/Sections.h"

#include <QRegularExpression>

#include <algorithm>

namespace Common {
namespace {

constexpr std::int32_t functionMaximum = 0xFFFF;
constexpr std::int32_t lowestNad = 0x60;
constexpr std::int32_t highestNad = 0x6F;
constexpr double lowestTolerance = 0.0;    // percent
constexpr double highestTolerance = 100.0; // percent
constexpr double nodeLatencyMs = 5.0;      // added to the bits of every response
constexpr int bitsPerByte = 10;            // start bit, data, stop bit
constexpr double standardSpeed = 19.2;     // kbit/s
constexpr std::uint8_t highestMasterId = 63;
constexpr std::uint8_t firstBroadcastId = 56;
constexpr std::uint8_t lastBroadcastId = 59;

bool isJ2602Node(const LdfNode &node)
{
    return node.protocol.contains(QLatin1String("J2602"), Qt::CaseInsensitive);
}

bool isTolerance(double percent)
{
    return percent > lowestTolerance && percent <= highestTolerance;
}

bool hasEntry(const LdfScheduleTable &table, QLatin1String name)
{
    return std::any_of(table.entries.begin(), table.entries.end(),
                       [name](const LdfScheduleEntry &entry) { return entry.frameName == name; });
}

} // namespace

bool LdfJ2602Parser::parseProtocolConfig(const QString &attributesText, LdfNode &node)
{
    static const QRegularExpression pattern(QStringLiteral("response_tolerance\\s*=\\s*(\\d+(?:\\.\\d+)?)\\s*%\\s*;"));
    if (!isJ2602Node(node))
        return true;
    const auto match = Sections::match(pattern, attributesText);
    if (match.hasMatch()) {
        node.responseTolerance = Numbers::doubleOrZero(match.capturedView(1));
        return true;
    }
    node.responseTolerance = LdfNodeDefault::responseTolerancePercent;
    logWarning("J2602 node {} missing required response_tolerance parameter, using default {:.1f}%%",
               LogText(node.name), node.responseTolerance);
    return true;
}

const LdfNode *LdfJ2602Parser::publisherOrError(const LdfFrame &frame)
{
    const LdfNode *publisher = publishingSlave(frame);
    if (publisher == nullptr)
        logError("Publisher node '{}' not found for frame '{}'", LogText(frame.publisher), LogText(frame.name));
    return publisher;
}

bool LdfJ2602Parser::parseFrameConfig(const QString &, LdfFrame &frame)
{
    if (isPublishedByMaster(frame))
        return true;
    const LdfNode *publisher = publisherOrError(frame);
    if (publisher == nullptr)
        return false;
    frame.responseTolerance = publisher->responseTolerance;
    return true;
}

bool LdfJ2602Parser::validateNodeConfig(const LdfNode &node)
{
    checkProductId(node, functionMaximum);
    if (node.type != LdfNodeType::slave || !isJ2602Node(node))
        return true;
    checkNad(node);
    return checkConfigurableFrames(node) && checkResponseError(node);
}

void LdfJ2602Parser::checkNad(const LdfNode &node) const
{
    if (node.configuredNad < lowestNad || node.configuredNad > highestNad)
        logWarning("J2602 slave node {} has invalid NAD 0x{:02X} (must be 0x{:02X}-0x{:02X})", LogText(node.name),
                   node.configuredNad, lowestNad, highestNad);
    if (node.initialNad != node.configuredNad)
        logWarning("J2602 slave node {} initial NAD (0x{:02X}) must equal configured NAD (0x{:02X})",
                   LogText(node.name), node.initialNad, node.configuredNad);
    if (!isTolerance(node.responseTolerance))
        logWarning("J2602 slave node {} has invalid response tolerance {:.1f}%% (must be 0-100)", LogText(node.name),
                   node.responseTolerance);
}

bool LdfJ2602Parser::checkConfigurableFrames(const LdfNode &node)
{
    if (node.configurableFrames.isEmpty()) {
        logError("J2602 slave node {} must have configurable frames defined", LogText(node.name));
        return false;
    }
    const LdfLookups::SignalNumbers &received = lookups().signalsReceivedBy(node.name);
    TextSet checked; // a list may name a frame again
    for (const QString &name : node.configurableFrames) {
        if (!checked.insert(name).second)
            continue;
        const auto frame = config().frames.find(name);
        if (frame == config().frames.end()) {
            logError("Configurable frame {} not found for node {}", LogText(name), LogText(node.name));
            return false;
        }
        if (frame->second.publisher != node.name && !lookups().hasAnyOf(frame->second, received)) {
            logError("Node {} neither publishes nor subscribes to configurable frame {}", LogText(node.name),
                     LogText(name));
            return false;
        }
    }
    return true;
}

bool LdfJ2602Parser::checkResponseError(const LdfNode &node)
{
    if (node.responseError.isEmpty()) {
        logError("J2602 slave node {} must define response_error signal", LogText(node.name));
        return false;
    }
    if (lookups().frameSignal(node.responseError) == nullptr) {
        logError("Response error signal {} not found in any frame for node {}", LogText(node.responseError),
                 LogText(node.name));
        return false;
    }
    return true;
}

bool LdfJ2602Parser::validateFrame(const LdfFrame &frame)
{
    checkFrameId(frame);
    if (!isPublishedByMaster(frame) && !isTolerance(frame.responseTolerance))
        logWarning("Response tolerance {:.1f}%% for frame {} is outside recommended range ({:.1f}%%-{:.1f}%%)",
                   frame.responseTolerance, LogText(frame.name), lowestTolerance, highestTolerance);
    return true;
}

void LdfJ2602Parser::checkFrameId(const LdfFrame &frame)
{
    struct Range
    {
        std::uint8_t first;
        std::uint8_t last;
        bool holds(std::uint8_t id) const { return id >= first && id <= last; }
    };
    static constexpr Range low{0x20, 0x2F};
    static constexpr Range high{0x38, 0x3B};
    if (isPublishedByMaster(frame)) {
        if (frame.id > highestMasterId)
            logWarning("J2602 master frame {} has ID 0x{:02X} outside recommended range (<=0x{:02X})",
                       LogText(frame.name), frame.id, highestMasterId);
    } else if (frame.id == 0) {
        logInfo("Slave frame {} using relative ID 0x00 (will be configured at runtime)", LogText(frame.name));
    } else if (!low.holds(frame.id) && !high.holds(frame.id)) {
        logWarning("J2602 slave frame {} has ID 0x{:02X} outside recommended range (0x{:02X}-0x{:02X} or "
                   "0x{:02X}-0x{:02X})",
                   LogText(frame.name), frame.id, low.first, low.last, high.first, high.last);
    }
}

bool LdfJ2602Parser::validateScheduleTable(const LdfScheduleTable &table)
{
    if (table.type == LdfScheduleTableType::diagnostic &&
        !(hasEntry(table, QLatin1String("MasterReq")) && hasEntry(table, QLatin1String("SlaveResp")))) {
        logError("J2602 diagnostic table {} must have MasterReq and SlaveResp frames", LogText(table.name));
        return false;
    }
    for (const LdfScheduleEntry &entry : table.entries) {
        const auto frame = config().frames.find(entry.frameName);
        if (frame == config().frames.end() || isPublishedByMaster(frame->second))
            continue;
        const double responseTime = responseTimeMs(frame->second);
        if (responseTime > entry.delay)
            logWarning("Frame {} in table {} has delay ({:.1f} ms) less than response time ({:.1f} ms)",
                       LogText(entry.frameName), LogText(table.name), entry.delay, responseTime);
    }
    return true;
}

bool LdfJ2602Parser::updateFrameTiming(LdfFrame &frame)
{
    if (isPublishedByMaster(frame))
        return true;
    const LdfNode *publisher = publisherOrError(frame);
    if (publisher == nullptr)
        return false;
    frame.minPeriod = std::max(frame.minPeriod, responseTimeMs(frame));
    frame.responseTolerance = publisher->responseTolerance;
    return true;
}

void LdfJ2602Parser::updateEventTriggeredFrame(LdfFrame &frame, const LdfEventTriggeredFrame &eventFrame)
{
    if (!isPublishedByMaster(frame))
        frame.minPeriod = std::max(frame.minPeriod, responseTimeMs(frame));
    takeCollisionDelay(frame, eventFrame);
}

double LdfJ2602Parser::responseTimeMs(const LdfFrame &frame)
{
    if (isPublishedByMaster(frame))
        return 0.0;
    const LdfNode *publisher = publishingSlave(frame);
    const double stated = publisher == nullptr ? 0.0 : publisher->responseTolerance;
    const double tolerance = stated > 0.0 ? stated : LdfNodeDefault::responseTolerancePercent;
    const double nominal = frame.size * bitsPerByte * bitTimeMs() + nodeLatencyMs;
    return nominal * tolerance / 100.0 + nominal;
}

void LdfJ2602Parser::printProtocolSummary()
{
    const auto isBroadcast = [](const auto &each) {
        return each.second.id >= firstBroadcastId && each.second.id <= lastBroadcastId;
    };
    logInfo("J2602 Specific Configuration:");
    logInfo("  Standard Baud Rate: {:.1f} kbps", standardSpeed);
    logInfo("  Broadcast Frames: {}", std::count_if(config().frames.begin(), config().frames.end(), isBroadcast));
}

void LdfJ2602Parser::printNodeSummary()
{
    LdfParser::printNodeSummary();
    for (const auto &[name, slave] : config().slaves) {
        logInfo("    Response Tolerance: {:.1f}%%", slave.responseTolerance);
        logInfo("    Configurable Frames: {}", slave.configurableFrames.size());
    }
}

} // namespace Common
