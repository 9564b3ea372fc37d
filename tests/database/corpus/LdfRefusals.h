// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

#include <utility>

namespace tzcorpus {

/// Subscriber given to signals that have none.
inline constexpr const char *invented = "TestSubscriber";

/// A file with all that makes the reader refuse it mended, and nothing else changed.
struct MendedLdf
{
    QString text;
    QStringList rules; ///< that applied; none: the reader is to take the file as it is
};

/// Begin and end of what stands between the braces of a section of an LDF file; both 0 where there is none.
std::pair<int, int> ldfSection(const QString &text, const QString &name);

/// Looks in a file's text for what the reader refuses and the independent tools take. Counts the rules' use on demand.
MendedLdf mendLdf(const QString &text, bool isCounting);

} // namespace tzcorpus
