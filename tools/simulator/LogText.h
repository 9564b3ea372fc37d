// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

/// Small helpers of the log readers.
namespace tzsim::logtext {

/// Takes the next line from the front, without its end.
inline std::string_view takeLine(std::string_view &text)
{
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

/// The words between blanks and tabs.
inline std::vector<std::string_view> words(std::string_view line)
{
    std::vector<std::string_view> result;
    constexpr std::string_view blanks = " \t";
    for (std::size_t at = line.find_first_not_of(blanks); at != std::string_view::npos;) {
        const std::size_t end = line.find_first_of(blanks, at);
        result.push_back(line.substr(at, end - at));
        at = end == std::string_view::npos ? end : line.find_first_not_of(blanks, end);
    }
    return result;
}

/// The whole text as a number; nothing for anything else, and for one that does not fit.
template <typename Number> std::optional<Number> number(std::string_view text, int base)
{
    Number value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (error != std::errc() || end != text.data() + text.size() || text.empty())
        return std::nullopt;
    return value;
}

/// Seconds with up to nine decimals as nanoseconds, exactly.
inline std::optional<std::int64_t> seconds(std::string_view text)
{
    constexpr std::int64_t maxSeconds = 9'000'000'000; // so that the nanoseconds fit
    const std::size_t dot = text.find('.');
    const auto whole = number<std::uint64_t>(text.substr(0, dot), 10);
    if (!whole || *whole > static_cast<std::uint64_t>(maxSeconds))
        return std::nullopt;
    std::int64_t ns = static_cast<std::int64_t>(*whole) * 1'000'000'000;
    if (dot == std::string_view::npos)
        return ns;
    const std::string_view decimals = text.substr(dot + 1, 9);
    const auto fraction = number<std::uint64_t>(decimals, 10);
    if (!fraction)
        return std::nullopt;
    auto part = static_cast<std::int64_t>(*fraction);
    for (std::size_t i = decimals.size(); i < 9; ++i)
        part *= 10;
    return ns + part;
}

} // namespace tzsim::logtext
