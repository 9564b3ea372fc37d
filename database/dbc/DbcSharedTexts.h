// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/text/RecentTexts.h"

#include <QString>
#include <QStringList>

/// What the signals of a file have in common: few units, few lists of receivers. To share them takes less memory, and
/// so less time, than to make them anew for each signal.
struct DbcSharedTexts
{
    Common::RecentTexts<QString> units;
    Common::RecentTexts<QStringList> receivers; ///< by the text that they were split from
};
