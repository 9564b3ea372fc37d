// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/text/KeyedHash.h"

#include <QString>
#include <QStringList>
#include <QStringView>

#include <optional>
#include <vector>

namespace Common {

/// What stands between the braces of the first `\bNAME\s*\{` in a prepared text, trimmed; a view into the text.
/// Nothing, and a line in the log, where there is no such place or its brace is never closed.
std::optional<QStringView> findLdfSection(QStringView text, QStringView name);

/// All blocks `NAME { ... }` of a text by name, so that looking up one after the other stays linear in the text.
class LdfBlockIndex
{
public:
    /// @p text must outlive this object.
    explicit LdfBlockIndex(QStringView text);
    /// The same as findLdfSection(). Gives nothing too, and logs an error, once the blocks handed out are many times
    /// the text: blocks in blocks, which no description has.
    std::optional<QStringView> find(QStringView name);

private:
    QStringView m_text;
    TextViewMap<qsizetype> m_blocks; // name to the place behind the first such block's opening brace
    qsizetype m_budget = 0;          // characters that may still be handed out
};

/// The parts between separators, trimmed, in order; a part with nothing at all in it is left out, one of blanks is not.
std::vector<QStringView> ldfParts(QStringView text, QChar separator);
/// The parts between commas, trimmed, the empty ones too.
QStringList ldfCommaList(QStringView text);
/// The words of a list, whatever commas and blanks stand between them.
QStringList ldfWordList(QStringView text);

} // namespace Common
