// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfParser.h"

#include "common/Log.h"
#include "database/ldf/LdfISO17987Parser.h"
#include "database/ldf/LdfJ2602Parser.h"
#include "database/ldf/LdfSectionReaders.h"
#include "database/text/LogText.h"
#include "database/text/Numbers.h"
#include "database/text/Sections.h"
#include "database/text/TextFile.h"

#include <QRegularExpression>
#include <QTextCodec>

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

namespace Common {
namespace {

constexpr double defaultBusSpeed = 19.2; // kbit/s
constexpr std::int32_t maximumSupplierId = 0x7FFF;
constexpr std::int32_t maximumVariantId = 0xFF;
constexpr std::int32_t maximumFunctionId = 0xFF;

QString firstCapture(const QRegularExpression &pattern, const QString &text)
{
    return Sections::match(pattern, text).captured(1);
}

double readBusSpeed(const QString &text)
{
    static const QRegularExpression pattern(QStringLiteral("LIN_speed\\s*=\\s*(\\d+(?:\\.\\d+)?)\\s*kbps"));
    const auto match = Sections::match(pattern, text);
    if (match.hasMatch())
        return Numbers::doubleOrZero(match.capturedView(1));
    logWarning("LIN speed not found in LDF file, using default 19.2 kbps");
    return defaultBusSpeed;
}

QString readChannelName(const QString &text)
{
    static const QRegularExpression pattern(QStringLiteral("Channel_name\\s*=\\s*\"([^\"]+)\""));
    const auto match = Sections::match(pattern, text);
    if (match.hasMatch())
        return match.captured(1);
    logDebug("Channel name not found in LDF file, using default");
    return QStringLiteral("LIN");
}

void warnOfUnknownCodec(const QString &encoding)
{
    const QString name = encoding.trimmed();
    if (!name.isEmpty() && QTextCodec::codecForName(name.toLatin1()) == nullptr)
        logWarning("Failed to find codec for encoding {}, trying system default", LogText(name));
}

} // namespace

LdfParser::LdfParser(QObject *parent)
    : QObject(parent)
{
}

LdfParser::~LdfParser() = default;

LdfParser *LdfParser::createParser(const QString &path, const QString &encoding, QObject *parent)
{
    std::optional<QString> text = TextFile::read(path, encoding);
    if (!text) {
        logError("Failed to open file: {}", path.toStdString());
        return nullptr;
    }
    const LdfProtocolVersion version = detectLdfProtocolVersion(TextFile::prepare(*std::move(text)));
    if (version == LdfProtocolVersion::unknown) {
        logError("LDF protocol version not detected: {}", path.toStdString());
        return nullptr;
    }
    if (isJ2602(version))
        return new LdfJ2602Parser(parent);
    if (isIso17987(version))
        return new LdfISO17987Parser(parent);
    return new LdfParser(parent);
}

bool LdfParser::loadLdfConfig(LdfConfig &outConfig, const QString &path, const QString &encoding)
{
    const std::unique_ptr<LdfParser> parser(createParser(path, encoding));
    if (parser == nullptr || !parser->parseFile(path, encoding))
        return false;
    outConfig = std::move(parser->m_config);
    return true;
}

bool LdfParser::parseFile(const QString &path, const QString &encoding)
{
    clear();
    forgetFile();
    m_filePath = path;
    logInfo("Load LDF file: {}, {}", path.toStdString(), LogText(encoding));
    std::optional<QString> raw = TextFile::read(path, encoding);
    if (!raw) {
        logError("Failed to open LDF file: {}", path.toStdString());
        return false;
    }
    warnOfUnknownCodec(encoding);
    const QString text = TextFile::prepare(*std::move(raw));
    if (!readHeader(text) || !readSections(text))
        return false;
    logInfo("LDF file parsed successfully: {}", path.toStdString());
    return true;
}

void LdfParser::clear()
{
    m_config = LdfConfig();
    m_lookups.clear();
    m_filePath.clear();
    m_signals.clear();
    m_encodings.clear();
    m_eventUpdates = 0;
}

bool LdfParser::readHeader(const QString &text)
{
    static const QRegularExpression revision(QStringLiteral("LDF_file_revision\\s*=\\s*\"([^\"]+)\""));
    m_config.fileRevision = firstCapture(revision, text);
    m_config.isBigEndian = text.contains(QLatin1String("LIN_sig_byte_order_big_endian"));
    m_config.protocolVersion = detectLdfProtocolVersion(text);
    if (m_config.protocolVersion == LdfProtocolVersion::unknown) {
        logError("LIN protocol version not found in LDF file");
        return false;
    }
    m_config.busSpeed = readBusSpeed(text);
    m_config.channelName = readChannelName(text);
    return true;
}

bool LdfParser::readSections(const QString &text)
{
    static constexpr std::array readers{
        &readLdfNodes,
        &readLdfEncodings,
        &readLdfSignals,
        &readLdfDiagnosticSignals,
        &readLdfRepresentations,
        &readLdfFrames,
        &readLdfDiagnosticFrames,
        &readLdfSporadicFrames,
        &readLdfEventTriggeredFrames,
        &readLdfSchedules,
    };
    const LdfReading reading{*this, m_config, m_signals, m_encodings};
    const bool isRead = std::all_of(readers.begin(), readers.end(), [&](auto reader) { return reader(text, reading); });
    if (!isRead || !validateLdfNodes(reading))
        return false;
    printLdfSummary(reading);
    return true;
}

bool LdfParser::parseProtocolConfig(const QString &, LdfNode &)
{
    return true;
}

bool LdfParser::parseFrameConfig(const QString &, LdfFrame &)
{
    return true;
}

bool LdfParser::validateNodeConfig(const LdfNode &node)
{
    return checkProductId(node, maximumFunctionId);
}

bool LdfParser::validateFrame(const LdfFrame &)
{
    return true;
}

bool LdfParser::validateScheduleTable(const LdfScheduleTable &)
{
    return true;
}

bool LdfParser::updateFrameTiming(LdfFrame &)
{
    return true;
}

void LdfParser::updateEventTriggeredFrame(LdfFrame &, const LdfEventTriggeredFrame &) {}

void LdfParser::printProtocolSummary() {}

void LdfParser::printNodeSummary()
{
    for (const auto &[name, slave] : m_config.slaves) {
        logDebug("  Slave Node: {}", LogText(name));
        logDebug("    Configured NAD: 0x{:02X}", slave.configuredNad);
    }
}

bool LdfParser::checkProductId(const LdfNode &node, std::int32_t functionMaximum)
{
    if (node.supplierId > maximumSupplierId)
        logWarning("Node {} has supplier ID 0x{:04X} exceeding recommended maximum 0x{:04X}", LogText(node.name),
                   node.supplierId, maximumSupplierId);
    if (node.functionId > functionMaximum)
        logWarning("Node {} has function ID 0x{:02X} exceeding recommended maximum 0x{:02X}", LogText(node.name),
                   node.functionId, functionMaximum);
    if (node.variantId > maximumVariantId)
        logWarning("Node {} has variant ID 0x{:02X} exceeding recommended maximum 0x{:02X}", LogText(node.name),
                   node.variantId, maximumVariantId);
    return true;
}

double LdfParser::bitTimeMs() const noexcept
{
    return m_config.busSpeed > 0.0 ? 1000.0 / (m_config.busSpeed * 1000.0) : 0.0;
}

void LdfParser::forgetFile() {}

void LdfParser::takeCollisionDelay(LdfFrame &frame, const LdfEventTriggeredFrame &eventFrame)
{
    ++m_eventUpdates;
    if (const auto delay = m_lookups.longestDelay(eventFrame.collisionTable))
        frame.maxPeriod = *delay;
}

} // namespace Common
