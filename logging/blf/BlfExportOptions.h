// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace BLF {

/// What a writer puts into its file.
struct BlfExportOptions
{
    bool exportInternalEvents = true; ///< also what is no data or remote frame
    bool exportAdditionalInfo = true; ///< also lengths, bit counts and bit rates
};

} // namespace BLF
