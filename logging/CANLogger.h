// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/CANLoggerConfig.h"
#include "logging/FrameLogger.h"

namespace Common {

/// Records the CAN traffic of a view in ASC or CSV form. All but the configuration is told at FrameLogger.
class CANLogger : public FrameLogger
{
public:
    /// @param unifiedTime  converts device time to common time; must outlive the logger. Null: device time as it is
    explicit CANLogger(const UnifiedTimeManager *unifiedTime);

    /// Takes the settings for the next start(), and numbers kept files from 1 again. Refused, with an error line, while
    /// running.
    void setConfig(const CANLoggerConfig &config);

private:
    static const Texts texts;
};

} // namespace Common
