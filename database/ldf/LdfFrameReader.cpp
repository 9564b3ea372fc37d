// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfSectionReaders.h"

#include "common/Log.h"
#include "database/ldf/LdfNumbers.h"
#include "database/ldf/LdfParser.h"
#include "database/ldf/LdfSections.h"
#include "database/ldf/LdfStatements.h"
#include "database/text/LogText.h"

#include <utility>

namespace Common {
namespace {

constexpr std::uint8_t maximumId = 63;
constexpr std::uint8_t maximumSize = 8; // bytes
constexpr std::uint8_t masterRequestId = 0x3C;
constexpr std::uint8_t slaveResponseId = 0x3D;

bool fitsFrame(const LdfFrame &frame)
{
    std::uint64_t bits = 0;
    for (const auto &[name, signal] : frame.signals)
        bits += signal.size;
    return bits <= std::uint64_t{frame.size} * 8;
}

bool readFrame(const QString &part, const LdfMatch &match, const LdfReading &reading)
{
    LdfFrame frame;
    frame.name = match.text(1);
    frame.id = static_cast<std::uint8_t>(ldfCIntegerOrZero<std::uint32_t>(match[2]));
    frame.publisher = match.text(3);
    frame.size = static_cast<std::uint8_t>(Numbers::integerOrZero<std::uint32_t>(match[4]));
    if (!reading.isNode(frame.publisher)) {
        logError("Publisher '{}' not found for frame '{}'", LogText(frame.publisher), LogText(frame.name));
        return true;
    }
    if (!readLdfFrameSignals(match[5], frame, reading) || !reading.rules.parseFrameConfig(part, frame))
        return false;
    if (frame.name.isEmpty() || frame.id > maximumId || frame.size > maximumSize || !fitsFrame(frame) ||
        !reading.rules.validateFrame(frame))
        return false;
    frame.isMasterFrame = frame.publisher == reading.config.master.name;
    reading.config.frames[frame.name] = std::move(frame);
    return true;
}

LdfFrame diagnosticFrame(const char *name, std::uint8_t id, const QString &publisher, const LdfConfig &config)
{
    LdfFrame frame;
    frame.name = QString::fromLatin1(name);
    frame.id = id;
    frame.size = maximumSize;
    frame.type = LdfFrameType::diagnostic;
    frame.publisher = publisher;
    frame.isMasterFrame = publisher == config.master.name;
    return frame;
}

} // namespace

bool readLdfFrames(const QString &text, const LdfReading &reading)
{
    const auto section = findLdfSection(text, u"Frames");
    if (!section) {
        logError("Frames section not found in LDF file");
        return false;
    }
    for (const QStringView part : ldfParts(*section, u'}')) {
        if (part.isEmpty())
            continue;
        const QString closed = part.toString() + u'}';
        const LdfMatch match = matchLdfFrame(closed);
        if (match && !readFrame(closed, match, reading))
            return false;
    }
    return true;
}

bool readLdfFrameSignals(QStringView block, LdfFrame &frame, const LdfReading &reading)
{
    for (const QStringView part : ldfParts(block, u';')) {
        const LdfMatch match = matchLdfPlacement(part);
        if (!match)
            continue;
        const auto signal = reading.signals.find(match[1]);
        if (signal == reading.signals.end()) {
            logError("Signal {} not found for frame {}", LogText(match[1]), LogText(frame.name));
            return false;
        }
        signal->second.startBit = Numbers::integerOrZero<std::uint16_t>(match[2]);
        frame.signals[signal->first] = signal->second;
    }
    return true;
}

bool readLdfDiagnosticFrames(const QString &text, const LdfReading &reading)
{
    const auto section = findLdfSection(text, u"Diagnostic_frames");
    if (!section)
        return true;
    const LdfConfig &config = reading.config;
    const QString firstSlave = config.slaves.empty() ? QString() : config.slaves.begin()->first;
    LdfFrame request = diagnosticFrame("MasterReq", masterRequestId, config.master.name, config);
    LdfFrame response = diagnosticFrame("SlaveResp", slaveResponseId, firstSlave, config);
    LdfMatch match;
    while ((match = matchLdfDiagnosticFrame(*section, qMax(match.end, qsizetype{0})))) {
        const QString name = match.text(1);
        LdfFrame *frame = name == request.name ? &request : name == response.name ? &response : nullptr;
        if (frame != nullptr && !readLdfFrameSignals(match[3], *frame, reading))
            return false;
    }
    reading.config.diagnosticFrames[request.name] = std::move(request);
    reading.config.diagnosticFrames[response.name] = std::move(response);
    return true;
}

bool readLdfSporadicFrames(const QString &text, const LdfReading &reading)
{
    const auto section = findLdfSection(text, u"Sporadic_frames");
    if (!section)
        return true;
    for (const QStringView part : ldfParts(*section, u';')) {
        const LdfMatch match = matchLdfNamedList(part);
        if (!match)
            continue;
        const QStringList frames = ldfCommaList(match[2]);
        for (const QString &name : frames) {
            if (reading.config.frames.count(name) > 0)
                continue;
            logError("Frame {} not found for sporadic frame {}", LogText(name), LogText(match[1]));
            return false;
        }
        reading.config.sporadicFrames[match.text(1)] = frames;
    }
    return true;
}

bool readLdfEventTriggeredFrames(const QString &text, const LdfReading &reading)
{
    const auto section = findLdfSection(text, u"Event_triggered_frames");
    if (!section)
        return true;
    for (const QStringView part : ldfParts(*section, u';')) {
        const LdfMatch match = matchLdfEventTriggeredFrame(part);
        if (!match)
            continue;
        LdfEventTriggeredFrame event;
        event.name = match.text(1);
        event.collisionTable = match.text(2);
        event.id = ldfCIntegerOrZero<std::int32_t>(match[3]);
        event.frames = ldfCommaList(match[4]);
        for (const QString &name : event.frames) {
            const auto frame = reading.config.frames.find(name);
            if (frame == reading.config.frames.end()) {
                logError("Frame {} not found for event triggered frame {}", LogText(name), LogText(event.name));
                return false;
            }
            frame->second.isEventTriggered = true;
        }
        reading.config.eventTriggeredFrames[event.name] = std::move(event);
    }
    return true;
}

} // namespace Common
