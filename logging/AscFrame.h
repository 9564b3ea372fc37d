// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/Utils.h"

#include <string>
#include <string_view>

/// What all ASC recordings have in common.
namespace Common::AscFrame {

inline constexpr std::string_view footer = "End TriggerBlock\n";

inline std::string dateLine()
{
    return std::string("date ") + Utils::getASCHeaderDateString() + '\n';
}

inline constexpr std::string_view timeMode(bool absoluteTime)
{
    return absoluteTime ? "absolute\n" : "relative\n";
}

} // namespace Common::AscFrame
