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
constexpr int growthRuns = 11;
constexpr int mostSlaves = 15; // of four frames: 60, which are all but the diagnostic and reserved ones

bool loads(const QString &path)
{
    LdfConfig config;
    return Common::LdfParser::loadLdfConfig(config, path, QStringLiteral("UTF-8"));
}

/// The middle of the runs.
double millisecondsToLoad(const QString &path, int count)
{
    std::vector<double> costs;
    for (int run = 0; run < count; ++run) {
        const auto start = Clock::now();
        if (!loads(path))
            throw std::runtime_error("refused: " + path.toStdString());
        costs.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
    }
    return median(costs);
}

bool reportLoad(const char *name, const QString &path)
{
    return report(name, millisecondsToLoad(path, runs), "ms", Want::AtMost, targetMs);
}

bool reportGrowth(const QTemporaryDir &folder)
{
    const QString large = folder.filePath(QStringLiteral("large.ldf"));
    const QString huge = folder.filePath(QStringLiteral("huge.ldf"));
    tzbench_files::writeLdfFile(large, mostSlaves * 10);
    tzbench_files::writeLdfFile(huge, mostSlaves * 100);
    const double time = millisecondsToLoad(huge, growthRuns) / millisecondsToLoad(large, growthRuns);
    const double size = static_cast<double>(QFileInfo(huge).size()) / static_cast<double>(QFileInfo(large).size());
    return report("ldf.load_growth", time * 10.0 / size, "x time for 10 x size", Want::AtMost, targetGrowth);
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
