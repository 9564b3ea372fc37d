// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QChar>
#include <QString>
#include <QStringView>

namespace Common {

/// The character classes that `\s`, `\d` and `\w` stand for in the formats' patterns: ASCII alone.
namespace TextClass {

inline bool isBlank(QChar character)
{
    const char16_t code = character.unicode();
    return code == u' ' || (code >= u'\t' && code <= u'\r');
}
inline bool isDigit(QChar character)
{
    const char16_t code = character.unicode();
    return code >= u'0' && code <= u'9';
}
inline bool isWord(QChar character)
{
    const char16_t code = character.unicode();
    return isDigit(character) || (code >= u'a' && code <= u'z') || (code >= u'A' && code <= u'Z') || code == u'_';
}

} // namespace TextClass

/// Walks over a text from left to right, for the hand-written readers that stand in for patterns.
/// Every take function gives an empty view, or false, and stays where it is, when there is nothing to take.
class TextCursor
{
public:
    explicit TextCursor(QStringView text, qsizetype position = 0)
        : m_text(text)
        , m_position(position)
    {
    }

    qsizetype position() const noexcept { return m_position; }
    void setPosition(qsizetype position) noexcept { m_position = position; }
    bool atEnd() const noexcept { return m_position >= m_text.size(); }
    bool isAt(char16_t character) const { return !atEnd() && m_text[m_position].unicode() == character; }
    QStringView rest() const { return m_text.mid(m_position); }
    QStringView since(qsizetype begin) const { return m_text.mid(begin, m_position - begin); }

    bool take(char16_t character)
    {
        if (!isAt(character))
            return false;
        ++m_position;
        return true;
    }
    bool take(QStringView literal)
    {
        if (m_text.size() - m_position < literal.size() || m_text.mid(m_position, literal.size()) != literal)
            return false;
        m_position += literal.size();
        return true;
    }
    QStringView takeBlanks() { return takeWhile(TextClass::isBlank); }
    QStringView takeDigits() { return takeWhile(TextClass::isDigit); }
    QStringView takeWord() { return takeWhile(TextClass::isWord); }

    template <typename Predicate> QStringView takeWhile(Predicate predicate)
    {
        const qsizetype begin = m_position;
        while (m_position < m_text.size() && predicate(m_text[m_position]))
            ++m_position;
        return since(begin);
    }
    /// What stands before the next such character, which is passed too. False where there is none.
    bool takeUpTo(char16_t character, QStringView &taken)
    {
        const qsizetype found = m_text.indexOf(QChar(character), m_position);
        if (found < 0)
            return false;
        taken = m_text.mid(m_position, found - m_position);
        m_position = found + 1;
        return true;
    }

private:
    QStringView m_text;
    qsizetype m_position;
};

/// Position of the next @p literal from @p from on, -1 where there is none. Quick where its first letter is rare.
qsizetype findLiteral(QStringView text, QStringView literal, qsizetype from);

} // namespace Common
