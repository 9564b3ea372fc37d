// SPDX-License-Identifier: GPL-3.0-or-later
// Start-up time and idle memory of the program itself, as a process in a folder of its own, on a loopback network
// without boxes. The time ends with the log line that the main window writes once it is painted; the log's stamps have
// a resolution of 1 ms.
#include "bench/BenchReport.h"
#include "common/ConfigManager.h"
#include "common/Log.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <optional>
#include <vector>

namespace {

using tzbench_report::median;
using tzbench_report::report;
using tzbench_report::Want;

constexpr int runs = 7;
constexpr unsigned long idleMs = 3500; // the start-up scan of 2 s is over by then

struct Figures
{
    double startMs = 0;
    double residentMiB = 0;
};

double residentMiB(qint64 pid)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(pid));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> lines = status.readAll().split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').first().toDouble() / 1024.0;
    }
    return 0;
}

/// The moment at which the log says that the window was painted.
std::optional<QDateTime> paintedAt(const QString &logFile)
{
    QFile log(logFile);
    if (!log.open(QIODevice::ReadOnly))
        return {};
    const QList<QByteArray> lines = log.readAll().split('\n');
    for (const QByteArray &line : lines) {
        if (line.contains("Main window painted"))
            return QDateTime::fromString(QString::fromLatin1(line.left(23)), QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
    }
    return {};
}

std::optional<Figures> measure(const QString &program)
{
    const QTemporaryDir workDir;
    QDir::setCurrent(workDir.path());
    Common::ConfigManager settings(QStringLiteral("config/tzbench.ini"));
    settings.logLevel = Common::LogLevel::debug;
    settings.saveConfig();
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    const QDateTime started = QDateTime::currentDateTime();
    process.start(program, QStringList());
    if (!process.waitForStarted())
        return {};
    QThread::msleep(idleMs);
    Figures figures{.startMs = 0, .residentMiB = residentMiB(process.processId())};
    process.terminate();
    process.waitForFinished();
    const auto painted = paintedAt(QStringLiteral("logs/TZBench.log"));
    if (!painted || !painted->isValid())
        return {};
    figures.startMs = static_cast<double>(started.msecsTo(*painted));
    return figures;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    if (qEnvironmentVariableIsEmpty("TZVCI_NETWORK"))
        qputenv("TZVCI_NETWORK", "127.77.2");
    const QString program = QCoreApplication::applicationDirPath() + QStringLiteral("/tzbench");
    std::vector<double> startMs;
    std::vector<double> resident;
    for (int run = 0; run < runs; ++run) {
        const std::optional<Figures> figures = measure(program);
        if (!figures) {
            fmt::print(stderr, "{} did not start, or its log is not readable\n", program.toStdString());
            return 1;
        }
        startMs.push_back(figures->startMs);
        resident.push_back(figures->residentMiB);
    }
    const bool fast = report("start_to_window", median(startMs), "ms", Want::AtMost, 500);
    return report("idle_memory", median(resident), "MiB", Want::AtMost, 120) && fast ? 0 : 1;
}
