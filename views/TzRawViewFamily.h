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

    std::uint8_t viewKind = 0; ///< TzVciViewKind
    int columnCount = 0;
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
