// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

namespace tzcorpus {

/// Subscriber given to signals that have none.
inline constexpr const char *invented = "TestSubscriber";

/// A file with all that makes the reader refuse it mended, and nothing else changed.
struct MendedLdf
{
    QString text;
    QStringList rules; ///< that applied; none: the reader is to take the file as it is
};

/// Looks in a file's text for what the reader refuses and the independent tools take. Counts the rules' use on demand.
MendedLdf mendLdf(const QString &text, bool isCounting);

} // namespace tzcorpus
