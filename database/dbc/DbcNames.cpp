// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/dbc/DbcNames.h"

#include <algorithm>
#include <array>

namespace DbcNames {

bool isSpecialMessage(QStringView name)
{
    static constexpr std::array names = {independentSignals, QStringView(u"CAPL_IDS"), QStringView(u"CAPL_MSG")};
    return std::find(names.begin(), names.end(), name) != names.end();
}

} // namespace DbcNames
