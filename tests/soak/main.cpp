// SPDX-License-Identifier: GPL-3.0-or-later
// The workbench on 16 simulated boxes for as long as one likes, with a restless user and boxes that go wrong; at the
// end every frame must be accounted for. Everything stays on loopback. soak.sh starts it.
#include "common/Log.h"
#include "common/platform/AllocatorPolicy.h"
#include "common/ui/WorkbenchStyle.h"
#include "tests/soak/BoxesProcess.h"
#include "tests/soak/SoakRun.h"
#include "tests/soak/ToolkitWarnings.h"
#include "tests/support/TempWorkDir.h"
#include "vci/TzVciNetwork.h"

#include <QApplication>
#include <QCommandLineParser>

#include <cstdio>
#include <cstring>
#include <random>

namespace {

constexpr auto boxesArgument = "--boxes";
constexpr int exitUsage = 2;
constexpr auto logFile = "logs/TZBench.log";
constexpr int logFileMb = 1000; // the judge reads it as it grows, so it is never begun anew

int runSoak(const tzsoak::SoakRun::Options &options)
{
    const tztest::TempWorkDir workDir; // config/ and logs/ of the run
    Common::logInit(logFile, Common::LogLevel::warning, logFileMb, 1);
    Common::logStart(false);
    bool passed = false;
    {
        tzsoak::SoakRun run(options);
        passed = run.run();
    }
    Common::logStop();
    return passed ? 0 : 1;
}

} // namespace

int main(int argc, char **argv)
{
    Common::platform::keepMemoryLevel(); // as in the program
    if (qEnvironmentVariableIsEmpty("TZVCI_NETWORK"))
        qputenv("TZVCI_NETWORK", "127.202.1");
    if (!TzVciNetwork::current().isLoopback()) {
        std::fprintf(stderr, "tz_soak: the network is not loopback\n");
        return exitUsage;
    }
    if (argc == 2 && std::strcmp(argv[1], boxesArgument) == 0)
        return tzsoak::runBoxesProcess();

    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    tzsoak::ToolkitWarnings::install();
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    Common::applyWorkbenchStyle(application);

    QCommandLineParser parser;
    const QCommandLineOption seconds(QStringLiteral("seconds"), QStringLiteral("How long."), QStringLiteral("n"),
                                     QStringLiteral("120"));
    const QCommandLineOption seed(QStringLiteral("seed"), QStringLiteral("Repeats the run that printed it."),
                                  QStringLiteral("n"), QString::number(std::random_device()()));
    parser.addOptions({seconds, seed});
    parser.addHelpOption();
    parser.process(application);
    tzsoak::SoakRun::Options options;
    bool secondsOk = false;
    bool seedOk = false;
    options.duration = std::chrono::seconds(parser.value(seconds).toInt(&secondsOk));
    options.seed = parser.value(seed).toUInt(&seedOk);
    options.logFile = logFile;
    if (!secondsOk || !seedOk || options.duration < tzsoak::SoakRun::shortestDuration) {
        std::fprintf(stderr, "tz_soak: --seconds is a number from %d up, --seed a number\n",
                     static_cast<int>(tzsoak::SoakRun::shortestDuration.count()));
        return exitUsage;
    }
    return runSoak(options);
}
