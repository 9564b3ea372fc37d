// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/FrameLogger.h"
#include "logging/LINLoggerConfig.h"

namespace Common {

/// Records the LIN traffic of a view in ASC or CSV form. All but the configuration is told at FrameLogger.
class LINLogger : public FrameLogger
{
public:
    /// @param unifiedTime  converts device time to common time; must outlive the logger. Null: device time as it is
    explicit LINLogger(const UnifiedTimeManager *unifiedTime);

    /// Takes the settings for the next start(), and numbers kept files from 1 again. Refused, with an error line, while
    /// running.
    void setConfig(const LINLoggerConfig &config);

private:
    static const Texts texts;
};

} // namespace Common
