// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <vector>

namespace tzsoak {

/// What was done to a box, or happens by itself, and may leave lines in the log.
enum class Cause
{
    Silence,
    LateReplies,
    Junk,
    Cut,
    Empty,
    Burst,
    Refusal,
    Vanish,
    Stall,  ///< of the machine: whatever would have read, drained or painted waits
    Freeze, ///< of the event loop alone, as while it waits for a box: the links go on reading, the views wait
};
const char *causeName(Cause cause);
/// Whether nobody did it: it lasts from when to when, and acts on all boxes.
bool isStandstill(Cause cause);

/// For how long after its end a cause may leave lines, at the longest: the close of a lost box, a late reply, and what
/// the boxes catch up with after a stall of theirs.
inline constexpr std::chrono::milliseconds longestAftermath{4000};

/// Which line of the log which cause may leave.
struct LogRule
{
    /// What the first group of the pattern is.
    enum class Names
    {
        Nothing, ///< there is none
        BoxIndex,
        BoxAddress,
    };

    const char *name; ///< for the table at the end
    const char *pattern;
    Names names;
    std::vector<Cause> causes;
    std::chrono::milliseconds leastStandstill{0}; ///< a shorter one explains nothing
    std::chrono::milliseconds aftermath = longestAftermath;
    /// Once in so long a time lines of it may have no cause that was seen: a single thread of the workbench or the
    /// boxes that is kept from running leaves them too. 0: none may.
    std::chrono::minutes oneUnseenIn{0};
};
const std::vector<LogRule> &logRules();

} // namespace tzsoak
