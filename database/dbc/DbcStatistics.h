// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

struct DbcFile;

namespace DbcStatistics {

/// Writes the figures of a file to the log, at debug level.
void log(const DbcFile &file, const QString &path);

} // namespace DbcStatistics
