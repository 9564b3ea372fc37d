// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfSectionReaders.h"

#include "common/Log.h"
#include "database/ldf/LdfParser.h"
#include "database/text/KeyedHash.h"
#include "database/text/LogText.h"

#include <cstdint>
#include <unordered_set>

namespace Common {
namespace {

bool checkNode(const LdfNode &node, LdfParser &rules)
{
    if (node.name.isEmpty()) {
        logError("Node name cannot be empty");
        return false;
    }
    if (node.type != LdfNodeType::master && node.protocol.isEmpty()) {
        logError("LIN protocol version not specified for slave node {}", LogText(node.name));
        return false;
    }
    if (node.type == LdfNodeType::slave && node.configuredNad == 0)
        logWarning("Configured NAD not specified for slave node {}", LogText(node.name));
    if (node.type == LdfNodeType::slave && node.responseError.isEmpty())
        logWarning("Response error signal not specified for slave node {}", LogText(node.name));
    return rules.validateNodeConfig(node);
}

} // namespace

bool validateLdfNodes(const LdfReading &reading)
{
    if (!checkNode(reading.config.master, reading.rules)) {
        logError("Failed to validate master node");
        return false;
    }
    for (const auto &[name, slave] : reading.config.slaves) {
        if (!checkNode(slave, reading.rules)) {
            logError("Failed to validate slave node: {}", LogText(name));
            return false;
        }
    }
    std::unordered_set<std::uint32_t, NumberHash> nads;
    for (const auto &[name, slave] : reading.config.slaves) {
        if (!nads.insert(static_cast<std::uint32_t>(slave.configuredNad)).second)
            logWarning("Duplicate NAD 0x{:02X} found for node {}", slave.configuredNad, LogText(name));
    }
    return true;
}

} // namespace Common
