// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/text/Sections.h"

#include "common/Log.h"
#include "database/text/LogText.h"
#include "database/text/TextCursor.h"

#include <algorithm>

namespace Common::Sections {

namespace {

void reportFailure(const QRegularExpression &pattern, const QString &text)
{
    Common::logError("The pattern {} could not be applied to a text of {} characters", LogText(pattern.pattern()),
                     text.size());
}

} // namespace

std::optional<Range> findWord(QStringView text, std::span<const QStringView> words, qsizetype from)
{
    TextCursor cursor(text, from);
    if (from > 0 && from < text.size() && TextClass::isWord(text[from - 1]))
        cursor.takeWord(); // the rest of a word is none
    while (!cursor.atEnd()) {
        cursor.takeWhile([](QChar character) { return !TextClass::isWord(character); });
        const qsizetype begin = cursor.position();
        const QStringView word = cursor.takeWord();
        if (!word.isEmpty() && std::find(words.begin(), words.end(), word) != words.end())
            return Range{begin, cursor.position()};
    }
    return std::nullopt;
}

std::optional<Range> findLineHead(QStringView text, QStringView keyword, qsizetype from)
{
    for (qsizetype found = findLiteral(text, keyword, from); found >= 0;
         found = findLiteral(text, keyword, found + 1)) {
        if (found > 0 && text[found - 1] != u'\n')
            continue;
        TextCursor cursor(text, found + keyword.size());
        cursor.takeBlanks();
        if (cursor.take(u':'))
            return Range{found, cursor.position()};
    }
    return std::nullopt;
}

std::optional<QStringView> findSection(QStringView text, QStringView name, std::span<const QStringView> endWords)
{
    const QStringView names[] = {name};
    const auto head = findWord(text, names);
    if (!head) {
        Common::logDebug("Section '{}' not found in content", LogText(name));
        return std::nullopt;
    }
    const auto next = findWord(text, endWords, head->end);
    const qsizetype end = next ? next->begin : text.size();
    return text.mid(head->end, end - head->end).trimmed();
}

QRegularExpressionMatch match(const QRegularExpression &pattern, const QString &text)
{
    QRegularExpressionMatch result = pattern.match(text);
    if (!result.isValid())
        reportFailure(pattern, text);
    return result;
}

void forEachMatch(const QRegularExpression &pattern, const QString &text,
                  const std::function<void(const QRegularExpressionMatch &)> &take)
{
    auto matches = pattern.globalMatch(text);
    while (matches.hasNext())
        take(matches.next());
    if (!matches.isValid())
        reportFailure(pattern, text);
}

} // namespace Common::Sections
