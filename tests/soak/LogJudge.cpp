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
constexpr seconds judgedAfter{3};      // until then the causes of a line are known
constexpr milliseconds together{100};  // a late drain leaves one line for each batch that it is behind
constexpr std::size_t mostKept = 1000; // unexplained lines

struct CompiledRule
{
    std::regex expression;
    const LogRule *rule;
};

const std::vector<CompiledRule> &compiledRules()
{
    static const std::vector<CompiledRule> compiled = [] {
        std::vector<CompiledRule> result;
        for (const LogRule &rule : logRules())
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

int boxAt(const std::string &address)
{
    for (int box = 0; box < boxCount; ++box) {
        if (TzVciNetwork::current().deviceAddress(box) == address)
            return box;
    }
    return LogJudge::noBox;
}

int boxOf(const LogRule &rule, const std::smatch &parts)
{
    switch (rule.names) {
    case LogRule::Names::BoxIndex: return std::stoi(parts[1].str());
    case LogRule::Names::BoxAddress: return boxAt(parts[1].str());
    case LogRule::Names::Nothing: break;
    }
    return LogJudge::anyBox;
}

// "Lost 12 datagrams from 127.1.2.135 on this host"
void addLoss(const std::string &text, std::array<std::uint64_t, boxCount> &lost)
{
    static const std::regex form(R"(Lost (\d+) datagrams from ([\d.]+) .*)");
    std::smatch parts;
    if (!std::regex_match(text, parts, form))
        return;
    if (const int box = boxAt(parts[2].str()); box != LogJudge::noBox)
        lost[static_cast<std::size_t>(box)] += std::stoull(parts[1].str());
}

} // namespace

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
        if (isExplained(line, *compiled.rule, boxOf(*compiled.rule, parts))) {
            ++m_explained[compiled.rule->name];
            return;
        }
        if (compiled.rule->oneUnseenIn.count() > 0) {
            countUnseen(line, *compiled.rule);
            return;
        }
    }
    if (m_unexplained.size() < mostKept)
        m_unexplained.push_back(line.text);
}

bool LogJudge::isExplained(const Line &line, const LogRule &rule, int box) const
{
    return std::any_of(m_faults.begin(), m_faults.end(), [&](const Fault &fault) {
        const bool atWork = line.at >= fault.from - leadTime &&
                            (fault.to == Clock::time_point::max() || line.at <= fault.to + rule.aftermath);
        const bool ofThisBox = box != noBox && (box == anyBox || fault.box == anyBox || fault.box == box);
        const bool longEnough = !isStandstill(fault.cause) || fault.to - fault.from >= rule.leastStandstill;
        return atWork && ofThisBox && longEnough &&
               std::find(rule.causes.begin(), rule.causes.end(), fault.cause) != rule.causes.end();
    });
}

void LogJudge::countUnseen(const Line &line, const LogRule &rule)
{
    const auto [since, isFirst] = m_unseenSince.try_emplace(rule.name, line.at);
    if (!isFirst && line.at - since->second < together)
        return;
    since->second = line.at;
    ++m_unseen[rule.name];
}

void LogJudge::forgetOldFaults()
{
    const auto limit = Clock::now() - judgedAfter - 2 * longestAftermath;
    std::erase_if(m_faults,
                  [&](const Fault &fault) { return fault.to != Clock::time_point::max() && fault.to < limit; });
}

int LogJudge::timeouts(Clock::time_point from, Clock::time_point to) const
{
    return static_cast<int>(std::count_if(m_timeouts.begin(), m_timeouts.end(),
                                          [&](Clock::time_point at) { return at >= from && at <= to; }));
}

} // namespace tzsoak
