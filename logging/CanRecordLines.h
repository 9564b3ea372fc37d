// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/CANLoggerConfig.h"
#include "logging/RecordFormatter.h"

#include <memory>

namespace Common {

/// The ASC or CSV text of CAN and CAN FD frames. Hexadecimal digits are lower-case.
std::unique_ptr<const RecordFormatter> makeCanRecordFormatter(const CANLoggerConfig &config);

} // namespace Common
