// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

#include <initializer_list>
#include <string>

namespace tztest {

/// What stands between the tags of the body.
inline std::string tooltipBody(const QString &html)
{
    const QString begin = QStringLiteral("<body>");
    const int from = html.indexOf(begin) + begin.size();
    return html.mid(from, html.indexOf(QStringLiteral("</body>")) - from).toStdString();
}

/// The body of a tool tip with this title, already in HTML, and these lines.
inline std::string expectedBody(const char *title, std::initializer_list<const char *> lines)
{
    std::string body = std::string("<div><b>") + title + "</b></div>";
    for (const char *line : lines)
        body += std::string("<div>") + line + "</div>";
    return body;
}

} // namespace tztest
