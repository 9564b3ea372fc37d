// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/simulator/FaultSchedule.h"

#include "tools/simulator/Simulator.h"
#include "tools/simulator/SpecText.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

namespace tzsim {

namespace {

using std::chrono::milliseconds;

constexpr std::uint64_t maxMilliseconds = 7ULL * 24 * 3600 * 1000;
constexpr std::size_t defaultJunkBytes = 100;
constexpr std::size_t defaultCutBytes = 20;
constexpr std::size_t defaultBurstFrames = 10'000;
constexpr auto retryComeBack = std::chrono::seconds(1);

const std::map<std::string, FaultSpec::Kind> kinds = {
    {"silence", FaultSpec::Kind::silence}, {"refuse", FaultSpec::Kind::reply}, {"drop", FaultSpec::Kind::reply},
    {"late", FaultSpec::Kind::reply},      {"resize", FaultSpec::Kind::reply}, {"junk", FaultSpec::Kind::junk},
    {"cut", FaultSpec::Kind::cut},         {"empty", FaultSpec::Kind::empty},  {"burst", FaultSpec::Kind::burst},
    {"vanish", FaultSpec::Kind::vanish},
};

const std::map<std::string, ReplyFault::Kind> replyKinds = {
    {"refuse", ReplyFault::Kind::refuse},
    {"drop", ReplyFault::Kind::drop},
    {"late", ReplyFault::Kind::delay},
    {"resize", ReplyFault::Kind::resize},
};

std::optional<milliseconds> takeTime(SpecText &spec, const std::string &key)
{
    constexpr std::uint64_t missing = maxMilliseconds + 1;
    const std::uint64_t value = spec.takeNumber(key, maxMilliseconds, missing);
    return value == missing ? std::nullopt : std::optional(milliseconds(value));
}

ReplyFault takeReplyFault(SpecText &spec)
{
    ReplyFault fault;
    fault.kind = replyKinds.at(spec.head());
    fault.match.protocol = spec.takeByte("protocol");
    fault.match.command = spec.takeByte("command");
    fault.match.channel = spec.takeByte("channel");
    fault.match.param = spec.takeByte("param");
    fault.match.firstByte = spec.takeByte("id");
    if (fault.kind == ReplyFault::Kind::refuse)
        fault.code = spec.takeByte("code").value_or(fault.code);
    if (fault.kind == ReplyFault::Kind::delay)
        fault.delay = takeTime(spec, "delay").value_or(milliseconds(1000));
    if (fault.kind == ReplyFault::Kind::resize)
        fault.length = static_cast<std::uint16_t>(spec.takeNumber("length", 1400, 2));
    const std::uint64_t times = spec.takeNumber("times", 1'000'000, 0);
    fault.times = times == 0 ? -1 : static_cast<int>(times);
    return fault;
}

} // namespace

std::optional<FaultSpec> FaultSpec::parse(std::string_view text, std::string &error)
{
    SpecText spec(text);
    const auto kind = kinds.find(spec.head());
    if (kind == kinds.end()) {
        error = fmt::format("there is no fault {}", spec.head());
        return std::nullopt;
    }
    FaultSpec fault;
    fault.kind = kind->second;
    fault.box = static_cast<int>(spec.takeNumber("box", 15, 0));
    fault.after = takeTime(spec, "after").value_or(milliseconds(0));
    switch (fault.kind) {
    case Kind::silence:
    case Kind::vanish: fault.duration = takeTime(spec, "for"); break;
    case Kind::reply: fault.reply = takeReplyFault(spec); break;
    case Kind::junk: fault.size = spec.takeNumber("size", 65'000, defaultJunkBytes); break;
    case Kind::cut: fault.size = spec.takeNumber("size", 32, defaultCutBytes); break;
    case Kind::empty: break;
    case Kind::burst:
        fault.size = spec.takeNumber("count", 10'000'000, defaultBurstFrames);
        fault.channel = static_cast<int>(spec.takeNumber("channel", 255, 0));
        break;
    }
    if (fault.kind != Kind::reply)
        fault.every = takeTime(spec, "every");
    if (fault.every && fault.every->count() == 0)
        fault.every.reset();
    error = spec.error();
    return error.empty() ? std::optional(fault) : std::nullopt;
}

FaultSchedule::FaultSchedule(const std::vector<FaultSpec> &faults, Clock::time_point start)
{
    for (const FaultSpec &fault : faults)
        m_events.push_back({fault, start + fault.after});
}

std::optional<FaultSchedule::Clock::time_point> FaultSchedule::run(Clock::time_point now, Simulator &simulator)
{
    std::vector<Event> later;
    for (Event &event : m_events) {
        Box *box = simulator.findBox(event.fault.box);
        if (event.due > now || !box) {
            later.push_back(event);
            continue;
        }
        if (event.ends) {
            end(event, *box);
            if (box->vanished()) // the address is taken for the moment
                later.push_back({event.fault, now + retryComeBack, true});
            continue;
        }
        begin(event, *box);
        if (event.fault.duration)
            later.push_back({event.fault, now + *event.fault.duration, true});
        if (event.fault.every)
            later.push_back({event.fault, std::max(event.due + *event.fault.every, now)});
    }
    m_events = std::move(later);
    const auto next = std::min_element(m_events.begin(), m_events.end(),
                                       [](const Event &a, const Event &b) { return a.due < b.due; });
    return next == m_events.end() ? std::nullopt : std::optional(next->due);
}

void FaultSchedule::begin(const Event &event, Box &box)
{
    const FaultSpec &fault = event.fault;
    switch (fault.kind) {
    case FaultSpec::Kind::silence: box.setSilent(true); break;
    case FaultSpec::Kind::reply: box.addReplyFault(fault.reply); break;
    case FaultSpec::Kind::junk: box.sendJunk(fault.size); break;
    case FaultSpec::Kind::cut: box.sendCutDatagram(fault.size); break;
    case FaultSpec::Kind::empty: box.sendEmptyDatagram(); break;
    case FaultSpec::Kind::burst: box.sendBurst(fault.channel, fault.size); break;
    case FaultSpec::Kind::vanish: box.vanish(); break;
    }
}

void FaultSchedule::end(const Event &event, Box &box)
{
    if (event.fault.kind == FaultSpec::Kind::silence)
        box.setSilent(false);
    else
        box.comeBack();
}

} // namespace tzsim
