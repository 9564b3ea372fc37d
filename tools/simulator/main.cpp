// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/simulator/ProgramOptions.h"
#include "tools/simulator/Simulator.h"
#include "tools/simulator/Stats.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fstream>

namespace {

using Clock = std::chrono::steady_clock;
using namespace tzsim;

constexpr int exitUsage = 2;
constexpr int exitFailure = 1;
constexpr auto statsPeriod = std::chrono::seconds(1);

void printStats(Simulator &simulator)
{
    const auto boxes = simulator.boxes();
    const std::vector<const Box *> all(boxes.begin(), boxes.end());
    fmt::print("{}", formatStatsText(all));
    std::fflush(stdout);
}

// By way of a second file, so that a reader never sees half of it.
bool writeStatsFile(const std::string &path, const Simulator &simulator)
{
    const std::string draft = path + ".tmp";
    std::ofstream file(draft, std::ios::trunc);
    file << simulator.statsJson();
    file.close();
    return file && std::rename(draft.c_str(), path.c_str()) == 0;
}

bool setUp(Simulator &simulator, const ProgramOptions &options, std::string &error)
{
    for (const BoxConfig &box : options.boxes)
        simulator.addBox(box);
    for (const auto &bus : options.joins) {
        if (!simulator.join(bus)) {
            error = "--join: these channels cannot be joined";
            return false;
        }
    }
    for (const FaultSpec &fault : options.faults) {
        if (!simulator.findBox(fault.box)) {
            error = fmt::format("--fault: there is no box {}", fault.box);
            return false;
        }
    }
    return simulator.start(&error);
}

bool startTraffic(Simulator &simulator, const ProgramOptions &options, std::string &error)
{
    for (const auto &[boxes, spec] : options.signals) {
        for (const int box : boxes)
            simulator.box(box).startSignals(spec);
    }
    for (const auto &[boxes, spec] : options.loads) {
        for (const int box : boxes)
            simulator.box(box).startLoad(spec);
    }
    for (const auto &[boxes, spec] : options.replays) {
        for (const int box : boxes) {
            if (!simulator.box(box).startReplay(spec, &error))
                return false;
        }
    }
    return true;
}

timespec toTimespec(Clock::duration duration)
{
    const auto wait = std::max(duration, Clock::duration::zero());
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(wait);
    return {seconds.count(), std::chrono::nanoseconds(wait - seconds).count()};
}

// Until a signal or the end of the duration.
void runUntilEnd(Simulator &simulator, const ProgramOptions &options, const sigset_t &signals)
{
    const auto start = Clock::now();
    FaultSchedule faults(options.faults, start);
    auto nextStats = start;
    for (;;) {
        const auto now = Clock::now();
        if (options.duration && now >= start + *options.duration)
            return;
        auto due = faults.run(now, simulator).value_or(now + statsPeriod);
        if (options.duration)
            due = std::min(due, start + *options.duration);
        if (!options.statsFile.empty()) {
            if (nextStats <= now) {
                writeStatsFile(options.statsFile, simulator); // a failure is told at the end
                nextStats = now + statsPeriod;
            }
            due = std::min(due, nextStats);
        }
        const timespec limit = toTimespec(due - Clock::now());
        const int signal = ::sigtimedwait(&signals, nullptr, &limit);
        if (signal == SIGUSR1)
            printStats(simulator);
        else if (signal > 0)
            return;
    }
}

int fail(const std::string &error)
{
    fmt::print(stderr, "tzvci-sim: {}\n", error);
    return exitFailure;
}

} // namespace

int main(int argc, char **argv)
{
    std::string error;
    const std::vector<const char *> arguments(argv + std::min(argc, 1), argv + argc);
    const auto options = ProgramOptions::parse(arguments, error);
    if (!options) {
        fmt::print(stderr, "tzvci-sim: {}\nTry tzvci-sim --help.\n", error);
        return exitUsage;
    }
    if (options->help) {
        fmt::print("{}", ProgramOptions::helpText());
        return 0;
    }

    // Blocked before any thread is made, so that the main thread alone takes them.
    sigset_t signals;
    ::sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGUSR1})
        ::sigaddset(&signals, signal);
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);

    Simulator simulator(options->network);
    if (!setUp(simulator, *options, error) || !startTraffic(simulator, *options, error))
        return fail(error);
    if (!options->quiet) {
        for (const Box *box : simulator.boxes())
            fmt::print("box {} at {}:{}\n", box->index(), box->address(), options->network.port);
        std::fflush(stdout);
    }
    runUntilEnd(simulator, *options, signals);
    if (!options->quiet)
        printStats(simulator);
    const bool written = options->statsFile.empty() || writeStatsFile(options->statsFile, simulator);
    simulator.stop();
    return written ? 0 : fail(fmt::format("cannot write {}", options->statsFile));
}
