// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace Common::platform {

/// Makes the allocator keep the process's memory level over days: few areas however many threads come and go, and large
/// buffers given back to the system when they are freed. To be called first in main(), before there are threads.
void keepMemoryLevel() noexcept;

} // namespace Common::platform
