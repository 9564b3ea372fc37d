// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcStatistics.h"

#include "common/Log.h"
#include "database/dbc/DbcFile.h"
#include "database/text/LogText.h"

#include <algorithm>
#include <numeric>

using Common::LogText;

namespace DbcStatistics {

namespace {

template <typename Predicate> std::ptrdiff_t countMessages(const DbcFile &file, Predicate predicate)
{
    return std::count_if(file.messages.begin(), file.messages.end(), predicate);
}

bool isMultiplexed(const DbcMessage &message)
{
    return std::any_of(message.signals.begin(), message.signals.end(),
                       [](const DbcSignal &signal) { return signal.isMultiplexor; });
}

QString sortedNodeNames(const DbcFile &file)
{
    QStringList names;
    for (const DbcNode &node : file.nodes)
        names.append(node.name);
    names.sort();
    return names.join(QStringLiteral(", "));
}

std::size_t countSignals(const DbcFile &file)
{
    return std::accumulate(file.messages.begin(), file.messages.end(), std::size_t{0},
                           [](std::size_t sum, const DbcMessage &message) { return sum + message.signals.size(); });
}

} // namespace

void log(const DbcFile &file, const QString &path)
{
    if (!Common::shouldLogLevel(Common::LogLevel::debug))
        return;
    Common::logDebug("DBC Parsing Statistics:");
    Common::logDebug("- File: {}", LogText::whole(path));
    Common::logDebug("- Version: {}", LogText(file.version));
    Common::logDebug("- Nodes: {}", file.nodes.size());
    if (!file.nodes.empty())
        Common::logDebug("  Node names: {}", LogText::whole(sortedNodeNames(file)));
    Common::logDebug("- Messages: {}", file.messages.size());
    Common::logDebug("  * Multiplexed Messages: {}", countMessages(file, isMultiplexed));
    Common::logDebug("  * J1939 Messages: {}",
                     countMessages(file, [](const auto &message) { return message.isJ1939; }));
    Common::logDebug("  * CAN FD Messages: {}", countMessages(file, [](const auto &message) { return message.isFd; }));
    Common::logDebug("  * Special Messages: {}", file.specialMessages.size());
    Common::logDebug("- Total Signals: {}", countSignals(file));
    Common::logDebug("- Value Tables: {}", file.valueTables.size());
    Common::logDebug("- Attributes: {}", file.attributeDefinitions.size());
    Common::logDebug("- Signal Value Types: {}", file.signalValueTypes.size());
    Common::logDebug("- Signal Multiplex Values: {}", file.signalMultiplexValues.size());
}

} // namespace DbcStatistics
