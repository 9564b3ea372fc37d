// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfSectionReaders.h"

#include "common/Log.h"
#include "database/ldf/LdfNumbers.h"
#include "database/ldf/LdfParser.h"
#include "database/ldf/LdfSections.h"
#include "database/ldf/LdfStatements.h"
#include "database/text/LogText.h"
#include "database/text/Sections.h"

#include <QRegularExpression>

namespace Common {
namespace {

void takeNumber(const QString &text, double &target)
{
    if (const auto number = Numbers::readDouble(text))
        target = *number;
}

bool readMaster(const QString &section, LdfNode &master)
{
    static const QRegularExpression pattern(
        QStringLiteral(
            "Master\\s*:\\s*([\\w]+)\\s*(?:,\\s*(\\d+(?:\\.\\d+)?)\\s*ms)?\\s*(?:,\\s*(\\d+(?:\\.\\d+)?)\\s*ms)?"
            "\\s*(?:,\\s*(\\d+)\\s*bits)?\\s*(?:,\\s*(\\d+(?:\\.\\d+)?)\\s*%)?"),
        QRegularExpression::MultilineOption);
    const auto match = Sections::match(pattern, section);
    if (!match.hasMatch()) {
        logError("Master node definition not found");
        return false;
    }
    master.name = match.captured(1).trimmed();
    master.type = LdfNodeType::master;
    takeNumber(match.captured(2), master.timeBase);
    takeNumber(match.captured(3), master.jitter);
    return true;
}

void readSlaves(const QString &section, std::map<QString, LdfNode> &slaves)
{
    const LdfMatch match = matchLdfSlaves(section);
    if (!match) {
        logWarning("No slave nodes defined");
        return;
    }
    for (const QString &name : ldfWordList(match[1]))
        addLdfSlave(name, slaves);
}

bool readAttributeSection(const QString &text, const LdfReading &reading)
{
    const auto section = findLdfSection(text, u"Node_attributes");
    if (!section)
        return true;
    LdfBlockIndex blocks(*section);
    for (auto &[name, slave] : reading.config.slaves) {
        const auto block = blocks.find(name);
        if (!block)
            logError("No attributes section found for node {}", LogText(name));
        if (!block || !readLdfNodeAttributes(block->toString(), slave, reading.rules)) {
            logError("Failed to parse attributes for node {}", LogText(name));
            return false;
        }
    }
    return true;
}

void resetProtocolFields(LdfNode &node)
{
    LdfNode fresh;
    fresh.name = node.name;
    fresh.type = node.type;
    fresh.timeBase = node.timeBase;
    fresh.jitter = node.jitter;
    fresh.publishes = node.publishes;
    fresh.subscribes = node.subscribes;
    node = fresh;
}

bool readProductId(const QString &block, LdfNode &node)
{
    static const QRegularExpression pattern(
        QStringLiteral("product_id\\s*=\\s*(0x[0-9A-Fa-f]+|\\d+)\\s*,\\s*(0x[0-9A-Fa-f]+|\\d+)\\s*,\\s*"
                       "(0x[0-9A-Fa-f]+|\\d+)\\s*;"));
    const auto match = Sections::match(pattern, block);
    if (!match.hasMatch())
        return true;
    const auto supplier = readLdfCInteger<std::int32_t>(match.capturedView(1));
    const auto function = readLdfCInteger<std::int32_t>(match.capturedView(2));
    const auto variant = readLdfCInteger<std::int32_t>(match.capturedView(3));
    if (!supplier || !function || !variant)
        return false;
    node.supplierId = *supplier;
    node.functionId = *function;
    node.variantId = *variant;
    return true;
}

// False: the text states a NAD that is no number; it is in @p text then.
bool readNad(const QRegularExpression &pattern, const QString &block, std::optional<std::int32_t> &nad, QString &text)
{
    const auto match = Sections::match(pattern, block);
    if (!match.hasMatch())
        return true;
    text = match.captured(1);
    nad = readLdfCInteger<std::int32_t>(text);
    return nad.has_value();
}

bool readNads(const QString &block, LdfNode &node)
{
    static const QRegularExpression configured(QStringLiteral("configured_NAD\\s*=\\s*(0x[0-9A-Fa-f]+|\\d+)\\s*;"));
    static const QRegularExpression initial(QStringLiteral("initial_NAD\\s*=\\s*(0x[0-9A-Fa-f]+|\\d+)\\s*;"));
    std::optional<std::int32_t> nad;
    QString text;
    if (!readNad(configured, block, nad, text)) {
        logError("Invalid configured NAD value for node {}: {}", LogText(node.name), LogText(text));
        return false;
    }
    node.configuredNad = nad.value_or(0);
    node.initialNad = node.configuredNad;
    if (!readNad(initial, block, nad, text)) {
        logError("Invalid initial NAD value for node {}: {}", LogText(node.name), LogText(text));
        return false;
    }
    node.initialNad = nad.value_or(0);
    return true;
}

bool readBasics(const QString &block, LdfNode &node)
{
    static const QRegularExpression responseError(QStringLiteral("response_error\\s*=\\s*([\\w_]+)\\s*;"));
    const LdfMatch protocol = matchLdfNodeProtocol(block);
    if (!protocol) {
        logError("LIN protocol version not found for node {}", LogText(node.name));
        return false;
    }
    node.protocol = protocol[1].trimmed().toString();
    if (!readNads(block, node) || !readProductId(block, node))
        return false;
    node.responseError = Sections::match(responseError, block).captured(1);
    return true;
}

void readTiming(const QString &block, LdfNode &node)
{
    static const QRegularExpression pattern(
        QStringLiteral("(P2_min|ST_min|N_As_timeout|N_Cr_timeout)\\s*=\\s*(\\d+(?:\\.\\d+)?)\\s*ms\\s*;"));
    bool hasP2 = false;
    bool hasSt = false;
    bool hasAs = false;
    bool hasCr = false;
    const auto take = [](const QRegularExpressionMatch &match, double &target, bool &has) {
        target = Numbers::doubleOrZero(match.capturedView(2));
        has = true;
    };
    Sections::forEachMatch(pattern, block, [&](const QRegularExpressionMatch &match) {
        const QString name = match.captured(1);
        if (name == QLatin1String("P2_min"))
            take(match, node.p2Min, hasP2);
        else if (name == QLatin1String("ST_min"))
            take(match, node.stMin, hasSt);
        else if (name == QLatin1String("N_As_timeout"))
            take(match, node.nAsTimeout, hasAs);
        else
            take(match, node.nCrTimeout, hasCr);
    });
    if (node.protocol.contains(QLatin1String("ISO17987"), Qt::CaseInsensitive) && !(hasP2 && hasSt && hasAs && hasCr))
        logWarning("ISO17987 node {} missing timing parameters: P2_min={}, ST_min={}, N_As={}, N_Cr={}",
                   LogText(node.name), hasP2, hasSt, hasAs, hasCr);
}

void readConfigurableFrames(const QString &block, LdfNode &node)
{
    const auto section = findLdfSection(block, u"configurable_frames");
    if (!section)
        return;
    LdfMatch frame;
    while ((frame = matchLdfConfigurableFrame(*section, qMax(frame.end, qsizetype{0}))))
        node.configurableFrames.append(frame.text(1));
}

} // namespace

bool readLdfNodes(const QString &text, const LdfReading &reading)
{
    const auto section = findLdfSection(text, u"Nodes");
    if (!section) {
        logError("Nodes section not found in LDF file");
        return false;
    }
    const QString nodes = section->toString();
    if (!readMaster(nodes, reading.config.master))
        return false;
    readSlaves(nodes, reading.config.slaves);
    return readAttributeSection(text, reading);
}

void addLdfSlave(const QString &name, std::map<QString, LdfNode> &slaves)
{
    if (name.isEmpty()) {
        logWarning("Found empty slave name in list");
        return;
    }
    LdfNode slave;
    slave.name = name;
    slave.type = LdfNodeType::slave;
    slaves.emplace(name, slave); // a repeated name changes nothing
}

bool readLdfNodeAttributes(const QString &block, LdfNode &node, LdfParser &rules)
{
    resetProtocolFields(node);
    if (!readBasics(block, node))
        return false;
    readTiming(block, node);
    readConfigurableFrames(block, node);
    if (rules.parseProtocolConfig(block, node))
        return true;
    logError("Failed to parse protocol specific config for node {}", LogText(node.name));
    return false;
}

} // namespace Common
