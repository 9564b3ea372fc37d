// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>
#include <map>

/// A linear range of a signal: physical = raw * factor + offset for minRaw <= raw <= maxRaw.
struct LdfPhysicalRange
{
    std::uint32_t minRaw = 0;
    std::uint32_t maxRaw = 0;
    double factor = 0.0;
    double offset = 0.0;
    QString unit;
};

/// How raw values of a signal read for people.
struct LdfEncoding
{
    QString name;
    std::map<std::uint32_t, LdfPhysicalRange> physicalRanges; ///< by the range's maxRaw
    std::map<std::uint32_t, QString> logicalValues;           ///< by raw value
};
