// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/blf/BlfCsvWriter.h"

#include "logging/blf/BlfCsvForm.h"
#include "logging/blf/BlfTextFile.h"

#include <algorithm>

namespace BLF {

BlfExportOptions BlfCsvWriter::options;

bool BlfCsvWriter::saveCsv(const QString &path, const BlfFrames &frames, const std::function<void()> &pulse)
{
    const BlfExportOptions chosen = options; // a pulse may lead to their change
    const bool hasFd = std::any_of(frames.begin(), frames.end(), [](const BlfFrame &frame) { return frame.isFd; });
    return saveRecords(path, frames, BlfCsvForm(chosen.exportAdditionalInfo, hasFd), chosen.exportInternalEvents,
                       pulse);
}

} // namespace BLF
