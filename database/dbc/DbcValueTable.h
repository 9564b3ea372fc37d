// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>
#include <unordered_map>

/// A `VAL_TABLE_`, or a `VAL_` without a message number.
struct DbcValueTable
{
    QString name;
    std::unordered_map<std::uint32_t, QString> entries;
};
