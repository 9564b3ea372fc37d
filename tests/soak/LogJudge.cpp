// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/soak/LogJudge.h"

#include "vci/TzVciNetwork.h"

#include <algorithm>
#include <ctime>
#include <iomanip>
#include <optional>
#include <regex>
#include <sstream>

namespace tzsoak {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr milliseconds leadTime{50};   // a line may be stamped a little before the fault is noted
constexpr seconds aftermath{4};        // the close of a lost box, a reply that is still to come
constexpr seconds judgedAfter{3};      // until then the causes of a line are known
constexpr std::size_t mostKept = 1000; // unexplained lines
constexpr int anyBox = -1;

/// Which line which fault may leave. The first group of the pattern is the box, where the line tells it.
struct Rule
{
    const char *name; ///< for the table at the end
    const char *pattern;
    bool namesBox;
    std::vector<Cause> causes;
};

const std::vector<Rule> &rules()
{
    using enum Cause;
    static const std::vector<Rule> table = {
        {"leftover bytes of a datagram",
         R"(Leftover data at the end of UDP datagram after parsing\. \d+ bytes remaining\.)",
         false,
         {Junk, Cut}},
        {"incomplete frame",
         R"(Incomplete protocol frame detected\. Expected \d+ bytes, but only \d+ remain\.)",
         false,
         {Cut}},
        {"request timed out",
         R"(Request Device(\d+) timed out after 500 ms)",
         true,
         {Silence, LateReplies, Empty, Vanish}},
        {"channel not closed",
         R"(Close device (\d+) channel \d+ failed: id \d+)",
         true,
         {Silence, LateReplies, Empty, Vanish}},
        {"refusal by the box", R"(Device (\d+) channel \d+ responsed error code: 1)", true, {Refusal}},
        {"channel not opened", R"(Open device (\d+) channel \d+ failed: id \d+\.)", true, {Refusal}},
        {"socket error", R"(Failed to (?:read|send) data\. Error: 111)", false, {Vanish}},
        {"device not opened", R"(Open Device(\d+) failed, Unable to read version information)", true, {Vanish}},
        {"datagrams lost",
         R"(Lost \d+ datagrams from [\d.]+ on this host: the receive buffer was full\.)",
         false,
         {Burst, Stall}},
        {"drain catches up", R"(UI message buffer may be full, continuing to drain\.\.\.)", false, {Burst, Stall}},
        {"view buffer full", R"((?:CAN|LIN) view buffer is full)", false, {Stall}},
    };
    return table;
}

struct CompiledRule
{
    std::regex expression;
    const Rule *rule;
};

const std::vector<CompiledRule> &compiledRules()
{
    static const std::vector<CompiledRule> compiled = [] {
        std::vector<CompiledRule> result;
        for (const Rule &rule : rules())
            result.push_back({std::regex(rule.pattern), &rule});
        return result;
    }();
    return compiled;
}

// "2026-11-21 04:24:58.123 [warning] text"; nothing for a line that goes on from the one before, or is mere
// information.
std::optional<std::pair<LogJudge::Clock::time_point, std::string>> parse(const std::string &line)
{
    static const std::regex form(R"((\d{4}-\d\d-\d\d \d\d:\d\d:\d\d)\.(\d{3}) \[(warning|error)\] (.*))");
    std::smatch parts;
    if (!std::regex_match(line, parts, form))
        return std::nullopt;
    std::tm local{};
    local.tm_isdst = -1;
    std::istringstream(parts[1].str()) >> std::get_time(&local, "%Y-%m-%d %H:%M:%S");
    const auto at = LogJudge::Clock::from_time_t(std::mktime(&local)) + milliseconds(std::stoi(parts[2].str()));
    return std::pair(at, parts[4].str());
}

// "Lost 12 datagrams from 127.1.2.135 on this host"
void addLoss(const std::string &text, std::array<std::uint64_t, boxCount> &lost)
{
    static const std::regex form(R"(Lost (\d+) datagrams from ([\d.]+) .*)");
    std::smatch parts;
    if (!std::regex_match(text, parts, form))
        return;
    for (int box = 0; box < boxCount; ++box) {
        if (TzVciNetwork::current().deviceAddress(box) == parts[2].str())
            lost[static_cast<std::size_t>(box)] += std::stoull(parts[1].str());
    }
}

} // namespace

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
    case Cause::Stall: return "stall";
    }
    return "unknown";
}

LogJudge::LogJudge(const std::filesystem::path &logFile)
    : m_file(logFile)
{
}

std::size_t LogJudge::begin(Cause cause, int box)
{
    m_faults.push_back({++m_faultCount, cause, box, Clock::now(), Clock::time_point::max()});
    return m_faultCount;
}

void LogJudge::end(std::size_t fault)
{
    const auto found = std::find_if(m_faults.begin(), m_faults.end(), [&](const Fault &f) { return f.id == fault; });
    if (found != m_faults.end())
        found->to = Clock::now();
}

void LogJudge::note(Cause cause, int box, Clock::time_point from, Clock::time_point to)
{
    m_faults.push_back({0, cause, box, from, to});
}

void LogJudge::read()
{
    fetch();
    judgeUntil(Clock::now() - judgedAfter);
    forgetOldFaults();
}

void LogJudge::readAll()
{
    fetch();
    judgeUntil(Clock::time_point::max());
}

void LogJudge::fetch()
{
    m_file.clear(); // of the end that it had reached
    for (std::string text; std::getline(m_file, text);) {
        m_partOfLine += text;
        if (m_file.eof())
            return; // the rest is still to be written
        if (const auto line = parse(m_partOfLine))
            m_waiting.push_back({line->first, line->second});
        m_partOfLine.clear();
    }
}

void LogJudge::judgeUntil(Clock::time_point limit)
{
    const auto end =
        std::find_if(m_waiting.begin(), m_waiting.end(), [&](const Line &line) { return line.at > limit; });
    std::for_each(m_waiting.begin(), end, [this](const Line &line) { judge(line); });
    m_waiting.erase(m_waiting.begin(), end);
}

void LogJudge::judge(const Line &line)
{
    if (line.text.starts_with("Request Device"))
        m_timeouts.push_back(line.at);
    addLoss(line.text, m_lostDatagrams);
    for (const CompiledRule &compiled : compiledRules()) {
        std::smatch parts;
        if (!std::regex_match(line.text, parts, compiled.expression))
            continue;
        const int box = compiled.rule->namesBox ? std::stoi(parts[1].str()) : anyBox;
        if (isExplained(line, box, compiled.rule->causes)) {
            ++m_explained[compiled.rule->name];
            return;
        }
    }
    if (m_unexplained.size() < mostKept)
        m_unexplained.push_back(line.text);
}

bool LogJudge::isExplained(const Line &line, int box, const std::vector<Cause> &causes) const
{
    return std::any_of(m_faults.begin(), m_faults.end(), [&](const Fault &fault) {
        const bool atWork = line.at >= fault.from - leadTime &&
                            (fault.to == Clock::time_point::max() || line.at <= fault.to + aftermath);
        const bool ofThisBox = box == anyBox || fault.box == box;
        return atWork && ofThisBox && std::find(causes.begin(), causes.end(), fault.cause) != causes.end();
    });
}

void LogJudge::forgetOldFaults()
{
    const auto limit = Clock::now() - judgedAfter - 2 * aftermath;
    std::erase_if(m_faults,
                  [&](const Fault &fault) { return fault.to != Clock::time_point::max() && fault.to < limit; });
}

int LogJudge::timeouts(Clock::time_point from, Clock::time_point to) const
{
    return static_cast<int>(std::count_if(m_timeouts.begin(), m_timeouts.end(),
                                          [&](Clock::time_point at) { return at >= from && at <= to; }));
}

} // namespace tzsoak
