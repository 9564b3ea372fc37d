// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>
#include <vector>

/// The ID part of a view's filter: a list such as "100-200,!150,300" of hexadecimal identifiers.
///
/// Parts are divided by commas: "123" and "100-200" name identifiers, "!123" names one as excluded. A part of any other
/// shape is skipped, and a later part overrides an earlier one for the same identifier. The part that first named an
/// identifier sets the mode of the whole list:
/// - include: an identifier passes if the list names it, excluded or not;
/// - exclude: an identifier passes unless its last mention excluded it.
/// Ranges are kept as ranges, so that "0-1FFFFFFF" costs no more than "0". One thread at a time.
class TzViewIdFilter
{
public:
    /// Reads the list anew.
    void setText(const QString &text);

    bool hasText() const noexcept { return m_hasText; }        ///< even where no part of it could be read
    bool isEmpty() const noexcept { return m_ranges.empty(); } ///< no identifier is named
    /// Whether a frame with this identifier is to be shown; always if the list is empty.
    bool passes(std::uint32_t id) const noexcept;

private:
    struct Range
    {
        std::uint32_t first = 0;
        std::uint32_t last = 0; // inclusive
        bool included = true;
    };

    std::vector<Range> m_ranges; // ascending, without overlaps
    bool m_includes = true;      // the mode
    bool m_hasText = false;
};
