// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/soak/LogRules.h"

namespace tzsoak {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds lossAftermath{1100}; // losses are told at once, and then once a second

// The socket's buffer holds two seconds of a box's datagrams where the system gives all that is asked for, and a good
// hundred milliseconds where it does not.
constexpr milliseconds leastLosingStall{50};
constexpr milliseconds leastFillingFreeze{3000}; // a view keeps a million frames

} // namespace

const std::vector<LogRule> &logRules()
{
    using enum Cause;
    using Names = LogRule::Names;
    static const std::vector<LogRule> table = {
        {"leftover bytes of a datagram",
         R"(Leftover data at the end of UDP datagram after parsing\. \d+ bytes remaining\.)",
         Names::Nothing,
         {Junk, Cut}},
        {"incomplete frame",
         R"(Incomplete protocol frame detected\. Expected \d+ bytes, but only \d+ remain\.)",
         Names::Nothing,
         {Cut}},
        {"request timed out",
         R"(Request Device(\d+) timed out after 500 ms)",
         Names::BoxIndex,
         {Silence, LateReplies, Empty, Vanish}},
        {"channel not closed",
         R"(Close device (\d+) channel \d+ failed: id \d+)",
         Names::BoxIndex,
         {Silence, LateReplies, Empty, Vanish}},
        {"refusal by the box", R"(Device (\d+) channel \d+ responsed error code: 1)", Names::BoxIndex, {Refusal}},
        {"channel not opened", R"(Open device (\d+) channel \d+ failed: id \d+\.)", Names::BoxIndex, {Refusal}},
        {"socket error", R"(Failed to (?:read|send) data\. Error: 111)", Names::Nothing, {Vanish}},
        {"device not opened",
         R"(Open Device(\d+) failed, Unable to read version information)",
         Names::BoxIndex,
         {Vanish}},
        {"datagrams lost",
         R"(Lost \d+ datagrams from ([\d.]+) on this host: the receive buffer was full\.)",
         Names::BoxAddress,
         {Burst, Stall},
         leastLosingStall,
         lossAftermath},
        {"drain catches up",
         R"(UI message buffer may be full, continuing to drain\.\.\.)",
         Names::Nothing,
         {Burst, Stall, Freeze},
         milliseconds{0},
         longestAftermath,
         std::chrono::minutes(5)},
        {"view buffer full",
         R"((?:CAN|LIN) view buffer is full)",
         Names::Nothing,
         {Freeze},
         leastFillingFreeze,
         lossAftermath},
    };
    return table;
}

const char *causeName(Cause cause)
{
    switch (cause) {
    case Cause::Silence: return "silence";
    case Cause::LateReplies: return "late replies";
    case Cause::Junk: return "junk datagram";
    case Cause::Cut: return "cut datagram";
    case Cause::Empty: return "empty datagram";
    case Cause::Burst: return "burst";
    case Cause::Refusal: return "refused opening";
    case Cause::Vanish: return "vanish and return";
    case Cause::Stall: return "stall of the machine";
    case Cause::Freeze: return "standstill of the event loop";
    }
    return "unknown";
}

bool isStandstill(Cause cause)
{
    return cause == Cause::Stall || cause == Cause::Freeze;
}

} // namespace tzsoak
