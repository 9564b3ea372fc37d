// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/CanRecordLines.h"
#include "logging/LinRecordLines.h"
#include "logging/LineBuffer.h"
#include "logging/RecordClock.h"

#include <memory>
#include <string>
#include <vector>

namespace tztest {

inline std::unique_ptr<const Common::RecordFormatter> makeFormatter(const Common::CANLoggerConfig &config)
{
    return Common::makeCanRecordFormatter(config);
}

inline std::unique_ptr<const Common::RecordFormatter> makeFormatter(const Common::LINLoggerConfig &config)
{
    return Common::makeLinRecordFormatter(config);
}

/// The lines of some records as one file would hold them, without header and closing line.
template <typename Config>
std::string linesOf(const Config &config, const std::vector<TzVciMessage> &messages,
                    const Common::UnifiedTimeManager *unifiedTime = nullptr)
{
    Common::RecordClock clock(unifiedTime, config.absoluteTime);
    Common::LineBuffer lines(16); // grows on the way
    makeFormatter(config)->append(messages, clock, lines);
    return std::string(lines.text());
}

/// The first line of an ASC header as a pattern, since it bears the present time.
inline constexpr const char *datePattern =
    "date (Sun|Mon|Tue|Wed|Thu|Fri|Sat) [A-Z][a-z]{2} [0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3} [0-9]{4}";

} // namespace tztest
