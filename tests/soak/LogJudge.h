// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "tests/soak/LogRules.h"
#include "tests/soak/SoakPlan.h"

namespace tzsoak {

/// Reads the program's log as it grows and finds for each warning and error the fault that explains it. One that
/// nothing explains makes the run fail. The log is a file, since a sink in the process would switch on the trace of
/// every datagram. UI thread.
class LogJudge
{
public:
    using Clock = std::chrono::system_clock;

    static constexpr int anyBox =
        -1; ///< of a cause that acts on all boxes, and of a line that may be about any of them
    static constexpr int noBox = -2;

    explicit LogJudge(const std::filesystem::path &logFile);

    /// The fault is at work on the box from now on until end(). @return what end() takes
    std::size_t begin(Cause cause, int box);
    void end(std::size_t fault);
    /// A cause that acted at once, or for a while that is over; on one box, or on anyBox.
    void note(Cause cause, int box, Clock::time_point from, Clock::time_point to);
    /// Judges the lines that have come since the last call and are old enough for their causes to be known.
    void read();
    /// Judges all that is left.
    void readAll();

    const std::vector<std::string> &unexplained() const { return m_unexplained; }
    /// How often lines without a cause came that may come all the same, by what they tell; what comes together counts
    /// once.
    const std::map<std::string, std::uint64_t> &unseen() const { return m_unseen; }
    /// Number of the lines explained, by what they tell.
    const std::map<std::string, std::uint64_t> &explained() const { return m_explained; }
    std::uint64_t lostDatagrams(int box) const { return m_lostDatagrams[static_cast<std::size_t>(box)]; }
    std::uint64_t faults() const { return m_faultCount; }
    /// Requests whose waiting time ended within the span.
    int timeouts(Clock::time_point from, Clock::time_point to) const;

private:
    struct Fault
    {
        std::size_t id = 0;
        Cause cause = Cause::Silence;
        int box = 0;
        Clock::time_point from;
        Clock::time_point to = Clock::time_point::max();
    };
    struct Line
    {
        Clock::time_point at;
        std::string text;
    };

    void fetch();
    void judgeUntil(Clock::time_point limit);
    void judge(const Line &line);
    bool isExplained(const Line &line, const LogRule &rule, int box) const;
    void countUnseen(const Line &line, const LogRule &rule);
    void forgetOldFaults();

    std::ifstream m_file;
    std::string m_partOfLine;
    std::vector<Line> m_waiting;
    std::vector<Fault> m_faults;
    std::size_t m_faultCount = 0;
    std::vector<Clock::time_point> m_timeouts;
    std::vector<std::string> m_unexplained;
    std::map<std::string, std::uint64_t> m_explained;
    std::map<std::string, std::uint64_t> m_unseen;
    std::map<std::string, Clock::time_point> m_unseenSince; // the first line of what came together last
    std::array<std::uint64_t, boxCount> m_lostDatagrams{};
};

} // namespace tzsoak
