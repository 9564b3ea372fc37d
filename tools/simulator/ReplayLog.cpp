// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/simulator/ReplayLog.h"

#include "tools/simulator/AscReader.h"
#include "tools/simulator/CandumpReader.h"

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <system_error>

namespace tzsim {

ReplayLog ReplayLog::parse(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    ReplayLog log = first != std::string_view::npos && text[first] == '(' ? readCandump(text) : readAsc(text);
    const auto byTime = [](const Entry &a, const Entry &b) { return a.timeNs < b.timeNs; };
    std::stable_sort(log.entries.begin(), log.entries.end(), byTime); // logs of several interfaces may be interleaved
    if (!log.entries.empty()) {
        const std::int64_t start = log.entries.front().timeNs;
        for (Entry &entry : log.entries)
            entry.timeNs -= start;
    }
    return log;
}

std::optional<ReplayLog> ReplayLog::load(const std::filesystem::path &file, std::string &error)
{
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream content;
    std::error_code ignored;
    const bool isFolder = std::filesystem::is_directory(file, ignored); // which opens, but throws when it is read
    if (stream && !isFolder && stream.peek() != std::ifstream::traits_type::eof())
        content << stream.rdbuf();
    if (!stream.is_open() || isFolder || stream.bad() || content.bad()) {
        error = fmt::format("cannot read {}", file.string());
        return std::nullopt;
    }
    const std::string text = std::move(content).str();
    ReplayLog log = parse(text);
    if (log.entries.empty()) {
        error = fmt::format("{} holds no frame of a candump or ASC log", file.string());
        return std::nullopt;
    }
    return log;
}

} // namespace tzsim
