// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/text/JoinedStatements.h"

#include "database/text/TextLines.h"

namespace Common {

namespace {

// What most lines fail to, at little cost.
bool mayOpen(QStringView line, QChar firstLetter)
{
    for (const QChar character : line) {
        if (!character.isSpace())
            return character == firstLetter;
    }
    return false;
}

} // namespace

JoinedStatements::JoinedStatements(QStringView text, QStringView keyword)
    : m_rest(text)
    , m_opening(keyword.toString() + u' ')
{
}

std::optional<QStringView> JoinedStatements::next()
{
    QStringView statement; // empty: none is open
    while (!m_rest.isEmpty()) {
        const QStringView rawLine = takeLine(m_rest);
        if (rawLine.isEmpty() || (statement.isEmpty() && !mayOpen(rawLine, m_opening.front())))
            continue;
        const QStringView line = rawLine.trimmed();
        if (line.startsWith(m_opening)) {
            statement = line;
        } else if (!statement.isEmpty()) {
            // From the second line on the statement has a text of its own.
            if (statement.data() != m_joined.constData() || statement.size() != m_joined.size())
                m_joined = statement.toString();
            m_joined.append(u' ').append(line.data(), static_cast<int>(line.size()));
            statement = m_joined;
        } else {
            continue;
        }
        if (line.endsWith(u';'))
            return statement;
    }
    return std::nullopt;
}

} // namespace Common
