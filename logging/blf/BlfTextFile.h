// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/blf/BlfFrame.h"
#include "logging/blf/BlfLineForm.h"

#include <QString>

#include <functional>

namespace BLF {

/// Writes records to a file in the lines of @p form, in their order: data and remote frames, and the others where
/// @p withInternalEvents is set. Replaces what is at @p path, but no file that a recorder is writing. What reached a
/// file that could not be written to its end stays there.
/// @param pulse  called now and then; may be empty
/// @return false for no records, which leaves the path alone, or where the file cannot be opened or written, which is
///         logged
bool saveRecords(const QString &path, const BlfFrames &frames, const BlfLineForm &form, bool withInternalEvents,
                 const std::function<void()> &pulse);

} // namespace BLF
