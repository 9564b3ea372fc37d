// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/text/Numbers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <system_error>

namespace Common::Numbers {

namespace {

// A number's text as ASCII: trimmed, its sign taken off. Nearly all fit the array; a long one costs an allocation.
class AsciiNumber
{
public:
    explicit AsciiNumber(QStringView text)
    {
        text = text.trimmed();
        if (!text.isEmpty() && (text[0] == u'+' || text[0] == u'-')) {
            m_isNegative = text[0] == u'-';
            text = text.mid(1);
        }
        char *target = m_short.data();
        const auto size = static_cast<std::size_t>(text.size());
        if (size > m_short.size()) {
            m_long.resize(size);
            target = m_long.data();
        }
        m_begin = target;
        m_end = std::transform(text.begin(), text.end(), target, [](QChar character) {
            return character.unicode() < 0x80 ? static_cast<char>(character.unicode()) : '?';
        });
    }

    AsciiNumber(const AsciiNumber &) = delete;
    AsciiNumber &operator=(const AsciiNumber &) = delete;

    bool isNegative() const { return m_isNegative; }
    const char *begin() const { return m_begin; }
    const char *end() const { return m_end; }
    // std::from_chars takes a minus of its own; behind the sign already taken it is none.
    bool startsWithSign() const { return m_begin == m_end || *m_begin == '-' || *m_begin == '+'; }

private:
    std::array<char, 48> m_short;
    std::string m_long;
    const char *m_begin = nullptr;
    const char *m_end = nullptr;
    bool m_isNegative = false;
};

bool startsWithHexPrefix(const char *begin, const char *end)
{
    return end - begin > 2 && begin[0] == '0' && (begin[1] == 'x' || begin[1] == 'X');
}

} // namespace

std::optional<double> readDouble(QStringView text)
{
    const AsciiNumber number(text);
    if (number.startsWithSign())
        return std::nullopt;
    double value = 0.0;
    const auto [end, error] = std::from_chars(number.begin(), number.end(), value);
    if (error != std::errc() || end != number.end() || !std::isfinite(value))
        return std::nullopt;
    return number.isNegative() ? -value : value;
}

std::optional<detail::SignedMagnitude> detail::readMagnitude(QStringView text, int base)
{
    const AsciiNumber number(text);
    const char *begin = number.begin();
    if (base == 16 && startsWithHexPrefix(begin, number.end()))
        begin += 2;
    if (number.startsWithSign() || *begin == '-')
        return std::nullopt;
    SignedMagnitude result{number.isNegative(), 0};
    const auto [end, error] = std::from_chars(begin, number.end(), result.magnitude, base);
    if (error != std::errc() || end != number.end())
        return std::nullopt;
    return result;
}

} // namespace Common::Numbers
