// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/simulator/Request.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tzsim {

class Box;
class Simulator;

/// One fault as the command line names it.
struct FaultSpec
{
    enum class Kind
    {
        silence,
        reply,
        junk,
        cut,
        empty,
        burst,
        vanish
    };
    Kind kind = Kind::silence;
    int box = 0;
    std::chrono::milliseconds after{0};                ///< since the start
    std::optional<std::chrono::milliseconds> every;    ///< repeats
    std::optional<std::chrono::milliseconds> duration; ///< of silence and vanish; for ever when empty
    ReplyFault reply;                                  ///< of Kind::reply
    std::size_t size = 0;                              ///< bytes of junk and cut, frames of a burst
    int channel = 0;                                   ///< of a burst

    /// Reads "kind,key=value..."; nothing, with a text for the user in @p error, when it is wrong.
    static std::optional<FaultSpec> parse(std::string_view text, std::string &error);
};

/// Lets the faults of the command line happen in time. For one thread.
class FaultSchedule
{
public:
    using Clock = std::chrono::steady_clock;

    FaultSchedule(const std::vector<FaultSpec> &faults, Clock::time_point start);
    /// Does what is due; returns when the next is due. A box that cannot come back is tried again each second.
    std::optional<Clock::time_point> run(Clock::time_point now, Simulator &simulator);

private:
    struct Event
    {
        FaultSpec fault;
        Clock::time_point due;
        bool ends = false; ///< the end of silence or vanish
    };
    void begin(const Event &event, Box &box);
    void end(const Event &event, Box &box);

    std::vector<Event> m_events;
};

} // namespace tzsim
