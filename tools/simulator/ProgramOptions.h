// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/simulator/BoxConfig.h"
#include "tools/simulator/BusFrame.h"
#include "tools/simulator/FaultSchedule.h"
#include "tools/simulator/Options.h"
#include "tools/simulator/TrafficSpec.h"

#include <chrono>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tzsim {

/// What the command line of tzvci-sim asks for.
struct ProgramOptions
{
    /// A kind of traffic and the boxes that it is for.
    template <typename Spec> struct ForBoxes
    {
        std::vector<int> boxes; ///< indexes of boxes
        Spec spec;
    };

    Options network = Options::fromEnvironment();
    std::vector<BoxConfig> boxes;
    std::vector<ForBoxes<LoadSpec>> loads;
    std::vector<ForBoxes<SignalSpec>> signals;
    std::vector<ForBoxes<ReplaySpec>> replays;
    std::vector<std::vector<ChannelRef>> joins;
    std::vector<FaultSpec> faults;
    std::string statsFile; ///< empty for none
    std::optional<std::chrono::milliseconds> duration;
    bool quiet = false;
    bool help = false;

    /// Reads the arguments without the program's name; nothing, with a text for the user in @p error, when one is
    /// wrong.
    static std::optional<ProgramOptions> parse(std::span<const char *const> arguments, std::string &error);
    static const char *helpText();
};

} // namespace tzsim
