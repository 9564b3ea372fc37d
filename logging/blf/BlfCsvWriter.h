// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/blf/BlfExportOptions.h"
#include "logging/blf/BlfFrame.h"

#include <QString>

#include <functional>

namespace BLF {

/// Writes records as CSV text, UTF-8.
class BlfCsvWriter
{
public:
    /// One for the whole process; for the thread that saves.
    static BlfExportOptions options;

    /// Replaces what is at @p path. A file that could not be written to its end stays as far as it came.
    /// @param pulse  called now and then, for a window that has to go on painting
    /// @return false for no records, or where the file cannot be opened or written
    static bool saveCsv(const QString &path, const BlfFrames &frames, const std::function<void()> &pulse = {});
};

} // namespace BLF
