// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcJ1939.h"

#include "common/Log.h"
#include "database/dbc/DbcFile.h"
#include "database/dbc/DbcNames.h"
#include "database/text/LogText.h"

#include <algorithm>

using Common::LogText;

namespace DbcJ1939 {

namespace {

constexpr std::uint32_t firstBroadcastFormat = 240;
constexpr std::uint32_t lastAddressedFormat = 239;
constexpr std::uint32_t specialFormat = 254;
constexpr std::uint8_t addressedPdu = 1;
constexpr std::uint8_t broadcastPdu = 2;
constexpr std::uint8_t specialPdu = 4;

const DbcNode *findJ1939Node(const DbcFile &file, const QString &name)
{
    const auto isWanted = [&name](const DbcNode &node) { return node.isJ1939 && node.name == name; };
    const auto node = std::find_if(file.nodes.begin(), file.nodes.end(), isWanted);
    return node == file.nodes.end() ? nullptr : &*node;
}

bool ownsAddress(const DbcNode &node, std::uint8_t address)
{
    const auto &claimed = node.claimedAddresses;
    return node.address == address || std::find(claimed.begin(), claimed.end(), address) != claimed.end();
}

} // namespace

DbcJ1939Info infoOf(std::uint32_t id)
{
    DbcJ1939Info info;
    info.priority = static_cast<std::uint8_t>(id >> 26 & 7);
    info.pgn = id >> 8 & 0x3FFFF;
    info.sourceAddress = static_cast<std::uint8_t>(id);
    const std::uint32_t format = id >> 16 & 0xFF;
    if (format < firstBroadcastFormat) {
        info.pduType = addressedPdu;
        info.destinationAddress = static_cast<std::uint8_t>(id >> 8);
        info.isPf239 = format == lastAddressedFormat;
    } else {
        info.pduType = format == specialFormat ? specialPdu : broadcastPdu;
    }
    return info;
}

bool isValid(const DbcJ1939Info &info, const DbcMessage &message, const DbcFile &file)
{
    if (info.pgn >= 0x40000) {
        Common::logError("Invalid PGN 0x{:X} for J1939 message {}", info.pgn, LogText(message.name));
        return false;
    }
    if (info.priority >= 8) {
        Common::logError("Invalid priority {} for J1939 message {}", info.priority, LogText(message.name));
        return false;
    }
    if (!DbcNames::isRealNode(message.transmitter))
        return true;
    const DbcNode *node = findJ1939Node(file, message.transmitter);
    if (node == nullptr) {
        Common::logWarning("Transmitter {} not found in J1939 nodes for message {}", LogText(message.transmitter),
                           LogText(message.name));
    } else if (!ownsAddress(*node, info.sourceAddress)) {
        Common::logWarning("Source address 0x{:X} not claimed by node {}", info.sourceAddress, LogText(node->name));
    }
    return true;
}

bool classify(DbcMessage &message, const DbcFile &file)
{
    const DbcJ1939Info info = infoOf(message.id);
    if (!isValid(info, message, file))
        return false;
    message.isJ1939 = true;
    message.j1939 = info;
    Common::logDebug("Parsed j1939 message: {} ({}) with {} signals", LogText(message.name), message.id,
                     message.signals.size());
    return true;
}

} // namespace DbcJ1939
