// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/TzViewIdFilter.h"

#include <QStringList>

#include <algorithm>
#include <limits>
#include <map>
#include <optional>

namespace {

constexpr std::uint32_t maxId = std::numeric_limits<std::uint32_t>::max();

// Hexadecimal digits alone: QString::toUInt would also take a sign and a prefix.
std::optional<std::uint32_t> parseId(const QString &text)
{
    const QString digits = text.trimmed();
    const auto isHexDigit = [](QChar c) {
        return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F');
    };
    if (!std::all_of(digits.begin(), digits.end(), isHexDigit))
        return std::nullopt;
    bool ok = false; // false for an empty text and for more than 32 bits
    const std::uint32_t id = digits.toUInt(&ok, 16);
    return ok ? std::optional(id) : std::nullopt;
}

struct Mention
{
    std::uint32_t first = 0;
    std::uint32_t last = 0;
    bool included = true;
};

std::optional<Mention> parsePart(const QString &part)
{
    if (part.startsWith(u'!')) {
        const auto id = parseId(part.mid(1));
        return id ? std::optional(Mention{*id, *id, false}) : std::nullopt;
    }
    const QStringList bounds = part.split(u'-');
    if (bounds.size() > 2)
        return std::nullopt;
    const auto first = parseId(bounds.first());
    const auto last = parseId(bounds.last());
    if (!first || !last || *first > *last)
        return std::nullopt;
    return Mention{*first, *last, true};
}

// Disjoint ranges by their first identifier; what is laid on top cuts away what lay there before.
class RangeMap
{
public:
    void lay(const Mention &mention)
    {
        cutBefore(mention.first);
        if (mention.last != maxId)
            cutBefore(mention.last + 1);
        m_ranges.erase(m_ranges.lower_bound(mention.first), m_ranges.upper_bound(mention.last));
        m_ranges.emplace(mention.first, mention);
    }
    const std::map<std::uint32_t, Mention> &ranges() const { return m_ranges; }

private:
    // Splits a range that holds id and begins before it.
    void cutBefore(std::uint32_t id)
    {
        auto next = m_ranges.lower_bound(id);
        if (next == m_ranges.begin())
            return;
        Mention &range = std::prev(next)->second;
        if (range.last < id)
            return;
        m_ranges.emplace_hint(next, id, Mention{id, range.last, range.included});
        range.last = id - 1;
    }

    std::map<std::uint32_t, Mention> m_ranges;
};

} // namespace

void TzViewIdFilter::setText(const QString &text)
{
    m_hasText = !text.isEmpty();
    m_ranges.clear();
    m_includes = true;

    RangeMap map;
    const QStringList parts = text.split(u',', Qt::SkipEmptyParts);
    for (const QString &part : parts) {
        const auto mention = parsePart(part.trimmed());
        if (!mention)
            continue;
        if (map.ranges().empty())
            m_includes = mention->included;
        map.lay(*mention);
    }
    m_ranges.reserve(map.ranges().size());
    for (const auto &[first, mention] : map.ranges())
        m_ranges.push_back({first, mention.last, mention.included});
}

bool TzViewIdFilter::passes(std::uint32_t id) const noexcept
{
    if (m_ranges.empty())
        return true;
    const auto next = std::upper_bound(m_ranges.begin(), m_ranges.end(), id,
                                       [](std::uint32_t value, const Range &range) { return value < range.first; });
    const bool named = next != m_ranges.begin() && std::prev(next)->last >= id;
    if (m_includes)
        return named;
    return !named || std::prev(next)->included;
}
