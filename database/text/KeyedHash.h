// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringView>

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <unordered_set>

/// Hashes for tables whose keys come from files.
///
/// They depend on numbers that each process draws at random, so nobody can write a file whose keys all meet in one
/// bucket, which would make reading it take quadratic time. The toolkit's hash of a text, and the standard library's of
/// a number, are the same everywhere; a seed for the former does not separate texts of equal length.
namespace Common {

/// Two different texts of up to n characters have the same hash once in about 2^61 / n times. Any thread.
std::uint64_t hashOfText(QStringView text);

/// Different numbers have different hashes; which of them share a bucket is left to chance. Any thread.
std::uint64_t hashOfNumber(std::uint32_t number);

struct TextHash
{
    using is_transparent = void; // a view is looked up without making a text of it
    // Not noexcept, so that a table keeps the hashes rather than reckon them anew along a chain.
    std::size_t operator()(QStringView text) const { return hashOfText(text); }
};

struct TextEqual
{
    using is_transparent = void;
    bool operator()(QStringView left, QStringView right) const noexcept { return left == right; }
};

struct NumberHash
{
    std::size_t operator()(std::uint32_t number) const noexcept { return hashOfNumber(number); }
};

template <typename Value> using TextMap = std::unordered_map<QString, Value, TextHash, TextEqual>;
/// Holds no texts of its own: those that it was filled with must outlive it.
template <typename Value> using TextViewMap = std::unordered_map<QStringView, Value, TextHash, TextEqual>;
using TextSet = std::unordered_set<QString, TextHash, TextEqual>;
template <typename Value> using NumberMap = std::unordered_map<std::uint32_t, Value, NumberHash>;

} // namespace Common
