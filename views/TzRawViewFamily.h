// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciMessage.h"

#include <QColor>
#include <QVariant>

#include <cstdint>
#include <optional>
#include <span>

struct TzRawFrameFilter;

/// What sets the raw views of the two bus families apart; all else is shared by TzRawViewModel. Pure functions.
struct TzRawViewFamily
{
    // Unscoped on purpose: the toolkit hands columns around as int. The first five columns are the same in both.
    enum Column
    {
        NumberColumn,
        TimeColumn,
        DeviceColumn,
        ChannelColumn,
        IdColumn
    };
    enum CanColumn
    {
        CanDirectionColumn = 6, // column 5 is the name, which only a database knows
        CanFormatColumn,
        CanKindColumn,
        CanIdTypeColumn,
        CanLengthColumn,
        CanDataColumn,
        CanColumnCount
    };
    enum LinColumn
    {
        LinDirectionColumn = 5,
        LinChecksumColumn,
        LinFrameTypeColumn,
        LinLengthColumn,
        LinDataColumn,
        LinColumnCount
    };

    std::uint8_t viewKind = 0; ///< TzVciViewKind
    int columnCount = 0;
    int dataColumn = 0;
    bool savesAsc = false; ///< whether a snapshot may be an ASC log, which takes the columns of the CAN table
    std::span<const char *const> headers; ///< to be translated in the context "TzRawViewModel"; one more than columns
    const char *overflowText = nullptr;   ///< log line when frames are dropped

    /// Equal exactly for the frames that share a folded row: same device, channel, direction and identifier.
    std::uint64_t (*foldKey)(const TzVciMessage &message) noexcept = nullptr;
    bool (*passes)(const TzRawFrameFilter &filter, const TzVciMessage &message) noexcept = nullptr;
    /// Display value of the columns from DeviceColumn on; invalid for a column that shows nothing.
    QVariant (*cellValue)(const TzVciMessage &message, int column) = nullptr;
    /// Colour of the row's text, where it is not that of every row.
    std::optional<Qt::GlobalColor> (*rowColor)(const TzVciMessage &message) noexcept = nullptr;

    static const TzRawViewFamily can;
    static const TzRawViewFamily lin;
};
