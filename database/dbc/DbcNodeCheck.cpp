// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcNodeCheck.h"

#include "common/Log.h"
#include "database/dbc/DbcFile.h"
#include "database/dbc/DbcNames.h"
#include "database/dbc/DbcScan.h"
#include "database/text/LogText.h"

#include <utility>

namespace DbcNodeCheck {

bool addIfValid(const QString &name, DbcFile &file)
{
    if (name.isEmpty()) {
        Common::logError("Node name cannot be empty");
        return false;
    }
    if (name == DbcNames::pseudoNode)
        return false;
    if (file.findNode(name) != nullptr) {
        Common::logWarning("Duplicate node name: {}", Common::LogText(name));
        return false;
    }
    if (!DbcScan::isNodeName(name)) {
        Common::logError("Invalid node name format: {}", Common::LogText(name));
        return false;
    }
    DbcNode node;
    node.name = name;
    file.addNode(std::move(node));
    return true;
}

} // namespace DbcNodeCheck
