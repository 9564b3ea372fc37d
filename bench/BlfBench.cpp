// SPDX-License-Identifier: GPL-3.0-or-later
// BLF logs become text: frames a second of each step and of whole conversions, memory, and whether the time grows with
// the size alone.
//   bench_blf [MB]   size of the log on the disk, 100 by default
#include "bench/BenchReport.h"
#include "bench/BlfTraffic.h"
#include "bench/PeakMemory.h"
#include "common/Log.h"
#include "logging/blf/BLFParser.h"
#include "logging/blf/BlfAscWriter.h"
#include "logging/blf/BlfCsvWriter.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <numeric>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using tzbench_report::median;
using tzbench_report::PeakMemory;
using tzbench_report::report;
using tzbench_report::Want;

constexpr double targetFramesPerSecond = 2e6;
constexpr double targetBytesPerFrame = 200;
constexpr double targetGrowth = 12.0; // for ten times the size
constexpr int runs = 3;

/// What a step took: by the clock, and of the processor, where other programs do not count.
struct Seconds
{
    double clock = 0;
    double processor = 0;

    friend Seconds operator+(const Seconds &left, const Seconds &right)
    {
        return {left.clock + right.clock, left.processor + right.processor};
    }
};

template <typename Step> Seconds secondsOf(const char *name, const Step &step)
{
    const std::clock_t processor = std::clock();
    const auto start = Clock::now();
    if (!step())
        throw std::runtime_error(std::string(name) + " failed");
    const double clock = std::chrono::duration<double>(Clock::now() - start).count();
    return {clock, static_cast<double>(std::clock() - processor) / CLOCKS_PER_SEC};
}

/// What the runs over one log took.
struct Times
{
    std::vector<Seconds> parse, saveAsc, saveCsv, toAsc, toCsv;
    double frames = 0;
    double bytesPerFrame = 0; ///< at the worst moment, beyond the payload
};

double payloadBytes(const BLF::BlfFrames &frames)
{
    return std::accumulate(frames.begin(), frames.end(), 0.0,
                           [](double sum, const BLF::BlfFrame &frame) { return sum + frame.data.size(); });
}

void measureOnce(const QString &blf, const QString &text, const PeakMemory &memory, Times &times)
{
    PeakMemory::begin();
    BLF::BLFParser parser;
    BLF::BlfFrames frames;
    const Seconds parse = secondsOf("parseFile", [&] { return parser.parseFile(blf, frames); });
    const Seconds asc = secondsOf("saveAsc", [&] { return BLF::BlfAscWriter::saveAsc(text, frames); });
    const Seconds csv = secondsOf("saveCsv", [&] { return BLF::BlfCsvWriter::saveCsv(text, frames); });
    times.parse.push_back(parse);
    times.saveAsc.push_back(asc);
    times.saveCsv.push_back(csv);
    times.toAsc.push_back(parse + asc);
    times.toCsv.push_back(parse + csv);
    times.frames = static_cast<double>(frames.size());
    times.bytesPerFrame = std::max(times.bytesPerFrame, (memory.growth() - payloadBytes(frames)) / times.frames);
}

Times measure(const QString &blf, const QString &text, const PeakMemory &memory)
{
    Times times;
    for (int run = 0; run < runs; ++run)
        measureOnce(blf, text, memory, times);
    return times;
}

double medianOf(const std::vector<Seconds> &seconds, double Seconds::*which)
{
    std::vector<double> values;
    for (const Seconds &value : seconds)
        values.push_back(value.*which);
    return median(values);
}

bool reportRate(const char *name, const Times &times, const std::vector<Seconds> &seconds)
{
    return report(name, times.frames / medianOf(seconds, &Seconds::clock), "frames/s", Want::AtLeast,
                  targetFramesPerSecond);
}

} // namespace

int main(int argc, char **argv)
try {
    const QCoreApplication application(argc, argv);
    const std::size_t bytes = 1'000'000 * static_cast<std::size_t>(argc > 1 ? std::max(1, std::atoi(argv[1])) : 100);
    Common::logInit("", Common::LogLevel::warning, 1, 1); // failures are told
    Common::logStart(true);
    const PeakMemory memory;
    const QTemporaryDir folder;
    const QString log = folder.filePath(QStringLiteral("traffic.blf"));
    const QString shortLog = folder.filePath(QStringLiteral("short.blf"));
    const QString text = folder.filePath(QStringLiteral("text"));
    tzbench_blf::writeTraffic(log, bytes);
    tzbench_blf::writeTraffic(shortLog, bytes / 10);

    const Times shortTimes = measure(shortLog, text, memory);
    const Times times = measure(log, text, memory);
    fmt::print(stderr, "{:.0f} frames and events in {} MB\n", times.frames, bytes / 1'000'000);
    bool ok = reportRate("blf.parse", times, times.parse);
    ok = reportRate("blf.save_asc", times, times.saveAsc) && ok;
    ok = reportRate("blf.save_csv", times, times.saveCsv) && ok;
    ok = reportRate("blf.to_asc", times, times.toAsc) && ok;
    ok = reportRate("blf.to_csv", times, times.toCsv) && ok;
    ok = report("blf.memory", times.bytesPerFrame, "bytes/frame beyond the payload", Want::AtMost,
                targetBytesPerFrame) &&
         ok;
    const double growth = medianOf(times.toCsv, &Seconds::processor) / medianOf(shortTimes.toCsv, &Seconds::processor);
    ok = report("blf.growth", growth, "x time for 10 x size", Want::AtMost, targetGrowth) && ok;
    Common::logStop();
    return ok ? 0 : 1;
} catch (const std::exception &error) {
    fmt::print(stderr, "error: {}\n", error.what());
    return 2;
}
