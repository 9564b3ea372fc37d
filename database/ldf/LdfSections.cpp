// SPDX-License-Identifier: GPL-3.0-or-later
#include "database/ldf/LdfSections.h"

#include "common/Log.h"
#include "database/ldf/LdfScanner.h"
#include "database/ldf/LdfStatements.h"
#include "database/text/LogText.h"

namespace Common {
namespace {

// How often a text of blocks may be handed out in full; blocks side by side need it once.
constexpr qsizetype nestingAllowed = 16;

std::optional<QStringView> reportMissing(QStringView name)
{
    logDebug("Section '{}' not found in content", LogText(name));
    return std::nullopt;
}

// From behind an opening brace to the brace that closes it.
std::optional<QStringView> insideBraces(QStringView text, qsizetype start, QStringView name)
{
    int depth = 1;
    for (qsizetype index = start; index < text.size(); ++index) {
        if (text[index] == u'{')
            ++depth;
        else if (text[index] == u'}' && --depth == 0)
            return text.mid(start, index - start).trimmed();
    }
    logError("Unmatched braces in section '{}'", LogText(name));
    return std::nullopt;
}

} // namespace

std::optional<QStringView> findLdfSection(QStringView text, QStringView name)
{
    for (qsizetype start = findLiteral(text, name, 0); start >= 0; start = findLiteral(text, name, start + 1)) {
        if (start > 0 && TextClass::isWord(text[start - 1]))
            continue;
        LdfScanner scanner(text, start + name.size());
        scanner.skipBlanks();
        if (scanner.take(u'{'))
            return insideBraces(text, scanner.position(), name);
    }
    return reportMissing(name);
}

LdfBlockIndex::LdfBlockIndex(QStringView text)
    : m_text(text)
    , m_budget(text.size() * nestingAllowed)
{
    LdfMatch block;
    while ((block = matchLdfBlockStart(text, qMax(block.end, qsizetype{0}))))
        m_blocks.emplace(block[1], block.end); // the first one stays
}

std::optional<QStringView> LdfBlockIndex::find(QStringView name)
{
    const auto found = m_blocks.find(name);
    if (found == m_blocks.end())
        return reportMissing(name);
    const auto block = insideBraces(m_text, found->second, name);
    if (!block)
        return std::nullopt;
    m_budget -= block->size();
    if (m_budget >= 0)
        return block;
    logError("Blocks are nested too deeply, '{}' is left out", LogText(name));
    return std::nullopt;
}

std::vector<QStringView> ldfParts(QStringView text, QChar separator)
{
    std::vector<QStringView> parts;
    for (qsizetype start = 0; start <= text.size();) {
        qsizetype end = text.indexOf(separator, start);
        if (end < 0)
            end = text.size();
        if (end > start)
            parts.push_back(text.mid(start, end - start).trimmed());
        start = end + 1;
    }
    return parts;
}

QStringList ldfCommaList(QStringView text)
{
    QStringList list;
    for (const QString &part : text.toString().split(u','))
        list.append(part.trimmed());
    return list;
}

QStringList ldfWordList(QStringView text)
{
    QStringList list;
    LdfScanner scanner(text);
    for (QStringView word; scanner.findWord(word);)
        list.append(word.toString());
    return list;
}

} // namespace Common
