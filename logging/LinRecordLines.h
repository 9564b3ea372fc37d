// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/LINLoggerConfig.h"
#include "logging/RecordFormatter.h"

#include <memory>

namespace Common {

/// The ASC or CSV text of LIN frames. Hexadecimal digits are upper-case.
std::unique_ptr<const RecordFormatter> makeLinRecordFormatter(const LINLoggerConfig &config);

} // namespace Common
