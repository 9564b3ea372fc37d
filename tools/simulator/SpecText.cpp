// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/simulator/SpecText.h"

#include <fmt/format.h>

#include <charconv>
#include <numeric>

namespace tzsim {

SpecText::SpecText(std::string_view text)
{
    const auto parts = split(text, ',');
    m_head = parts.front();
    for (std::size_t i = 1; i < parts.size(); ++i) {
        const std::size_t equals = parts[i].find('=');
        const std::string key(parts[i].substr(0, equals));
        const std::string value(equals == std::string_view::npos ? std::string_view() : parts[i].substr(equals + 1));
        if (!m_values.emplace(key, value).second)
            fail(fmt::format("{} is given twice", key));
    }
}

std::vector<std::string_view> SpecText::split(std::string_view text, char separator)
{
    std::vector<std::string_view> parts;
    for (;;) {
        const std::size_t end = text.find(separator);
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos)
            return parts;
        text.remove_prefix(end + 1);
    }
}

std::optional<std::uint64_t> SpecText::number(std::string_view text, std::uint64_t max)
{
    const bool hexadecimal = text.starts_with("0x");
    text.remove_prefix(hexadecimal ? 2 : 0);
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, hexadecimal ? 16 : 10);
    if (error != std::errc() || end != text.data() + text.size() || text.empty() || value > max)
        return std::nullopt;
    return value;
}

void SpecText::fail(std::string text)
{
    if (m_error.empty())
        m_error = std::move(text);
}

std::optional<std::string> SpecText::takeText(const std::string &key)
{
    auto node = m_values.extract(key);
    return node.empty() ? std::nullopt : std::optional(node.mapped());
}

bool SpecText::takeFlag(const std::string &key)
{
    const auto text = takeText(key);
    if (text && !text->empty())
        fail(fmt::format("{} takes no value", key));
    return text.has_value();
}

std::uint64_t SpecText::takeNumber(const std::string &key, std::uint64_t max, std::uint64_t fallback)
{
    const auto text = takeText(key);
    if (!text)
        return fallback;
    const auto value = number(*text, max);
    if (!value)
        fail(fmt::format("{}={} is not a number of 0 to {}", key, *text, max));
    return value.value_or(fallback);
}

std::optional<std::uint8_t> SpecText::takeByte(const std::string &key)
{
    if (!m_values.contains(key))
        return std::nullopt;
    return static_cast<std::uint8_t>(takeNumber(key, 255, 0));
}

double SpecText::takeReal(const std::string &key, double fallback)
{
    const auto text = takeText(key);
    if (!text)
        return fallback;
    double value = 0;
    const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), value);
    if (error != std::errc() || end != text->data() + text->size() || !(value >= 0)) {
        fail(fmt::format("{}={} is not a number of 0 and above", key, *text));
        return fallback;
    }
    return value;
}

std::vector<int> SpecText::takeChannels(const std::string &key, int limit)
{
    const std::string text = takeText(key).value_or("all");
    std::vector<int> channels;
    if (text == "all") {
        channels.resize(static_cast<std::size_t>(limit));
        std::iota(channels.begin(), channels.end(), 0);
        return channels;
    }
    for (const std::string_view part : split(text, '+')) {
        const auto channel = number(part, 255);
        if (!channel || static_cast<int>(*channel) >= limit) {
            fail(fmt::format("{}={}: there are {} such channels, counted from 0", key, text, limit));
            return {};
        }
        channels.push_back(static_cast<int>(*channel));
    }
    return channels;
}

std::string SpecText::error() const
{
    if (!m_error.empty() || m_values.empty())
        return m_error;
    return fmt::format("{} is not known here", m_values.begin()->first);
}

} // namespace tzsim
