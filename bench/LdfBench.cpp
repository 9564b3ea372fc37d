// SPDX-License-Identifier: GPL-3.0-or-later
// Loading LDF files: what a user waits for, up to a cluster that uses every frame identifier; and whether the time
// grows with the size alone.
#include "bench/BenchReport.h"
#include "bench/DatabaseFiles.h"
#include "common/Log.h"
#include "database/ldf/LdfParser.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <limits>
#include <stdexcept>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using tzbench_report::median;
using tzbench_report::report;
using tzbench_report::Want;

constexpr double targetMs = 5.0;
constexpr double targetGrowth = 12.0; // for ten times the size
constexpr int runs = 101;
constexpr int growthRuns = 21;
constexpr int mostSlaves = 15; // of four frames: 60, which are all but the diagnostic and reserved ones

bool loads(const QString &path)
{
    LdfConfig config;
    return Common::LdfParser::loadLdfConfig(config, path, QStringLiteral("UTF-8"));
}

void load(const QString &path)
{
    if (!loads(path))
        throw std::runtime_error("refused: " + path.toStdString());
}

bool reportLoad(const char *name, const QString &path)
{
    std::vector<double> costs;
    for (int run = 0; run < runs; ++run) {
        const auto start = Clock::now();
        load(path);
        costs.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
    }
    return report(name, median(costs), "ms", Want::AtMost, targetMs);
}

/// Processor time, so that a run of many milliseconds is not charged for what other programs do meanwhile.
double processorSecondsToLoad(const QString &path)
{
    const std::clock_t start = std::clock();
    load(path);
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

/// Of the fastest runs, by turns: what else presses on the caches slows down the larger file more.
bool reportGrowth(const QTemporaryDir &folder)
{
    const QString large = folder.filePath(QStringLiteral("large.ldf"));
    const QString huge = folder.filePath(QStringLiteral("huge.ldf"));
    tzbench_files::writeLdfFile(large, mostSlaves * 10);
    tzbench_files::writeLdfFile(huge, mostSlaves * 100);
    double largeSeconds = std::numeric_limits<double>::max();
    double hugeSeconds = std::numeric_limits<double>::max();
    for (int run = 0; run < growthRuns; ++run) {
        largeSeconds = std::min(largeSeconds, processorSecondsToLoad(large));
        hugeSeconds = std::min(hugeSeconds, processorSecondsToLoad(huge));
    }
    const double size = static_cast<double>(QFileInfo(huge).size()) / static_cast<double>(QFileInfo(large).size());
    return report("ldf.load_growth", hugeSeconds / largeSeconds * 10.0 / size, "x processor time for 10 x size",
                  Want::AtMost, targetGrowth);
}

} // namespace

int main(int argc, char **argv)
try {
    const QCoreApplication application(argc, argv);
    const QTemporaryDir folder;
    tzbench_files::startLog(folder.path());
    const QString full = folder.filePath(QStringLiteral("full.ldf"));
    tzbench_files::writeLdfFile(full, mostSlaves);
    bool ok = reportLoad("ldf.load_60_frames", full);
    ok &= reportGrowth(folder);
    const QStringList corpus = tzbench_files::corpusFiles(QStringLiteral("ldf"));
    const auto largest = std::find_if(corpus.begin(), corpus.end(), loads); // some are refused, and sooner
    if (largest != corpus.end())
        ok &= reportLoad("ldf.load_corpus", *largest);
    Common::logStop();
    return ok ? 0 : 1;
} catch (const std::exception &error) {
    fmt::print(stderr, "error: {}\n", error.what());
    return 2;
}
