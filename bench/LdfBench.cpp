// SPDX-License-Identifier: GPL-3.0-or-later
// Loading LDF files: what a user waits for, up to a cluster that uses every frame identifier.
#include "bench/BenchReport.h"
#include "bench/DatabaseFiles.h"
#include "common/Log.h"
#include "database/ldf/LdfParser.h"

#include <QCoreApplication>
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
constexpr int runs = 101;
constexpr int mostSlaves = 15; // of four frames: 60, which are all but the diagnostic and reserved ones

bool loads(const QString &path)
{
    LdfConfig config;
    return Common::LdfParser::loadLdfConfig(config, path, QStringLiteral("UTF-8"));
}

bool reportLoad(const char *name, const QString &path)
{
    std::vector<double> costs;
    for (int run = 0; run < runs; ++run) {
        const auto start = Clock::now();
        if (!loads(path))
            throw std::runtime_error("refused: " + path.toStdString());
        costs.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
    }
    return report(name, median(costs), "ms", Want::AtMost, targetMs);
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
