// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tzsim {

/// The argument of an option in the form "head,key=value,flag". Values are taken key by key; what is wrong or left over
/// is told by error(), the first mistake only.
class SpecText
{
public:
    explicit SpecText(std::string_view text);

    const std::string &head() const { return m_head; }
    bool takeFlag(const std::string &key);
    /// A decimal number, or a hexadecimal one after 0x, from 0 to @p max; @p fallback when the key is missing.
    std::uint64_t takeNumber(const std::string &key, std::uint64_t max, std::uint64_t fallback);
    std::optional<std::uint8_t> takeByte(const std::string &key);
    double takeReal(const std::string &key, double fallback); ///< not negative
    /// Numbers joined by '+', each below @p limit; "all" and a missing key stand for all of them.
    std::vector<int> takeChannels(const std::string &key, int limit);
    std::optional<std::string> takeText(const std::string &key);
    /// Empty when all was well; a key that nobody took is a mistake.
    std::string error() const;

    /// The whole text as a number of 0 to @p max.
    static std::optional<std::uint64_t> number(std::string_view text, std::uint64_t max);
    static std::vector<std::string_view> split(std::string_view text, char separator);

private:
    void fail(std::string text);

    std::string m_head;
    std::map<std::string, std::string> m_values; // those not taken yet; a flag has an empty value
    std::string m_error;
};

} // namespace tzsim
