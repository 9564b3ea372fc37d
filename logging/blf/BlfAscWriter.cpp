// SPDX-License-Identifier: GPL-3.0-or-later
#include "logging/blf/BlfAscWriter.h"

#include "logging/blf/BlfAscForm.h"
#include "logging/blf/BlfTextFile.h"

namespace BLF {

BlfExportOptions BlfAscWriter::options;

bool BlfAscWriter::saveAsc(const QString &path, const BlfFrames &frames, const std::function<void()> &pulse)
{
    const BlfExportOptions chosen = options; // a pulse may lead to their change
    return saveRecords(path, frames, BlfAscForm(chosen, QDateTime::currentDateTime()), chosen.exportInternalEvents,
                       pulse);
}

} // namespace BLF
