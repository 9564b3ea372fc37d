// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFile>
#include <QString>

#include <string>

namespace Common {

/// The bytes by which the toolkit's files name a path, for functions that take bytes: in the locale's encoding, where
/// QString::toStdString() gives UTF-8, which may name another file. Any thread.
inline std::string localFileName(const QString &path)
{
    return QFile::encodeName(path).toStdString();
}

} // namespace Common
