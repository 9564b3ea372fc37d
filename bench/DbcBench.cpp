// SPDX-License-Identifier: GPL-3.0-or-later
// Loading DBC files: how many bytes a second, and whether the time grows with the size alone.
#include "bench/BenchReport.h"
#include "bench/DatabaseFiles.h"
#include "common/Log.h"
#include "database/dbc/DbcParser.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QTemporaryDir>

#include <chrono>
#include <stdexcept>
#include <vector>

#include <malloc.h>

namespace {

using Clock = std::chrono::steady_clock;
using tzbench_report::median;
using tzbench_report::report;
using tzbench_report::Want;

constexpr double targetMegabytesPerSecond = 50.0;
constexpr double targetGrowth = 12.0; // for ten times the size
constexpr std::size_t usualBytes = 800'000;
constexpr std::size_t largeBytes = 2'000'000;
constexpr std::size_t hugeBytes = 20'000'000;

/// Seconds for one load into an empty model, as at the start of the program; the middle of the runs. The memory of the
/// run before goes back to the system first, which is not counted: else a small file would be read into pages that are
/// there already, while those for the text of a large one, which the allocator does not keep, are always new.
double secondsToLoad(const QString &path, int runs)
{
    Common::DbcParser parser;
    std::vector<double> seconds;
    for (int run = 0; run < runs; ++run) {
        Common::DbcParser::model().clear();
        malloc_trim(0);
        const auto start = Clock::now();
        if (!parser.parseFile(path, QStringLiteral("UTF-8")))
            throw std::runtime_error("refused: " + path.toStdString());
        seconds.push_back(std::chrono::duration<double>(Clock::now() - start).count());
    }
    return median(seconds);
}

double megabytes(const QString &path)
{
    return static_cast<double>(QFileInfo(path).size()) / 1e6;
}

bool reportSpeed(const char *name, const QString &path, double seconds)
{
    return report(name, megabytes(path) / seconds, "MB/s", Want::AtLeast, targetMegabytesPerSecond);
}

} // namespace

int main(int argc, char **argv)
try {
    const QCoreApplication application(argc, argv);
    const QTemporaryDir folder;
    tzbench_files::startLog(folder.path());
    const QString usual = folder.filePath(QStringLiteral("usual.dbc"));
    const QString large = folder.filePath(QStringLiteral("large.dbc"));
    const QString huge = folder.filePath(QStringLiteral("huge.dbc"));
    tzbench_files::writeDbcFile(usual, usualBytes);
    tzbench_files::writeDbcFile(large, largeBytes);
    tzbench_files::writeDbcFile(huge, hugeBytes);

    bool ok = reportSpeed("dbc.load_800_kb", usual, secondsToLoad(usual, 21));
    const double largeSeconds = secondsToLoad(large, 11);
    const double hugeSeconds = secondsToLoad(huge, 5);
    ok &= reportSpeed("dbc.load_20_mb", huge, hugeSeconds);
    ok &= report("dbc.load_growth", hugeSeconds / largeSeconds, "x time for 10 x size", Want::AtMost, targetGrowth);
    const QStringList corpus = tzbench_files::corpusFiles(QStringLiteral("dbc"));
    if (!corpus.isEmpty())
        ok &= reportSpeed("dbc.load_corpus", corpus.first(), secondsToLoad(corpus.first(), 21));
    Common::logStop();
    return ok ? 0 : 1;
} catch (const std::exception &error) {
    fmt::print(stderr, "error: {}\n", error.what());
    return 2;
}
