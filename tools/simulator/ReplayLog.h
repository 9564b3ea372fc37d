// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/simulator/BusFrame.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tzsim {

/// A recorded log in memory.
struct ReplayLog
{
    struct Entry
    {
        std::int64_t timeNs = 0; ///< since the first entry
        int channel = 0;         ///< of the log, counted from 0
        std::variant<CanFrame, LinFrame> frame;
    };
    std::vector<Entry> entries;   ///< in order of time
    std::size_t skippedLines = 0; ///< lines that are neither a frame nor part of the format

    /// Reads a candump log or an ASC file; nothing, with a text for the user in @p error, for a file that cannot be
    /// read or holds no frame.
    static std::optional<ReplayLog> load(const std::filesystem::path &file, std::string &error);
    /// The same for a text in memory: a candump log when its first line with content begins with a bracket.
    static ReplayLog parse(std::string_view text);
};

} // namespace tzsim
