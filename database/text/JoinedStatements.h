// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringView>

#include <optional>

namespace Common {

/// The statements of one keyword, each joined to one line.
///
/// A trimmed line that begins with the keyword and one blank opens a statement (and drops one that was still open),
/// lines behind it are appended with one blank between, and a line that ends in ";" closes it. Empty lines do not
/// count. A statement that is still open at the end of the text is dropped. Linear in the text.
class JoinedStatements
{
public:
    /// @p text must outlive this object.
    JoinedStatements(QStringView text, QStringView keyword);

    /// The next statement, trimmed, from the keyword to the ";"; it holds until the next call. Nothing at the end.
    std::optional<QStringView> next();

private:
    QStringView m_rest;
    QString m_opening; // keyword and blank
    QString m_joined;  // a statement of several lines
};

} // namespace Common
