// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

namespace Common {

enum class ReplaceFileResult
{
    Replaced,
    NotOpened,
    NotWritten, ///< the disk is full, say; what was there is there still, unless it had to be written directly
};

/// Writes a file as a whole: what was there stays until all is written, unless the folder takes no new file; then a
/// file that is there is written directly. Does not make the folder. Any thread; logs nothing.
/// @param problem  the system's reason for a failure
[[nodiscard]] ReplaceFileResult replaceFile(const QString &path, const QByteArray &content, QString *problem = nullptr);

} // namespace Common
