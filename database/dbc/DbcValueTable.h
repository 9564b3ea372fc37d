// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/dbc/DbcValueTexts.h"

#include <QString>

/// A `VAL_TABLE_`, or a `VAL_` without a message number.
struct DbcValueTable
{
    QString name;
    DbcValueTexts entries;
};
