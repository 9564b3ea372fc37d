// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/TestProgram.h"

#include "tests/app/AppChild.h"
#include "tests/logging/blf/BlfTestWriter.h"
#include "tests/support/TempWorkDir.h"
#include "tests/support/WaitFor.h"
#include "tools/simulator/Simulator.h"

#include <QDir>
#include <fmt/format.h>

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QtTest>

#include <csignal>

namespace {

constexpr int endLimitMs = 15000;
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int soonMs = 3000;
#else
constexpr int soonMs = 1500;
#endif
/// With this line the settings dialog is about to show: a signal meets a modal dialog before the event loop proper.
constexpr const char *dialogLine = "Config file not found: config/vci/vci_config.json";

/// tzbench in a folder of its own, on the loopback network of this test and without a display.
class Program
{
public:
    void start(const QStringList &prefix = {}) { run(prefix + QStringList(QStringLiteral(TZBENCH_PROGRAM))); }
    /// This test program in one of its roles, see AppChild.h.
    void startRole(const char *role) { run({QCoreApplication::applicationFilePath(), QString::fromLatin1(role)}); }
    bool logs(const char *text)
    {
        return tztest::waitFor([&] { return log().contains(text) || m_process.state() == QProcess::NotRunning; }) &&
               log().contains(text);
    }
    /// Whether the next line of its output is this one.
    bool says(const char *line)
    {
        return tztest::waitFor([&] { return m_process.canReadLine(); }) && m_process.readLine().trimmed() == line;
    }
    /// Whether the signal ends it in time, and not as a failure.
    bool endsCleanlyAfter(int signalNumber)
    {
        const auto id = static_cast<pid_t>(m_process.processId()); // 0 once it has ended
        return id > 0 && ::kill(id, signalNumber) == 0 && m_process.waitForFinished(endLimitMs) &&
               m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0;
    }
    QByteArray log() const { return file("logs/TZBench.log"); }
    QByteArray file(const char *path) const
    {
        QFile file(m_workDir.filePath(QString::fromLatin1(path)));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QProcess &process() { return m_process; }
    /// Puts a file into the program's folder.
    void putFile(const QString &name, const QByteArray &content)
    {
        const QString path = m_workDir.filePath(name);
        QVERIFY(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), qint64{content.size()});
    }

    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();

private:
    void run(QStringList command)
    {
        m_process.setProcessEnvironment(environment);
        m_process.setWorkingDirectory(m_workDir.filePath(QString()));
        m_process.setProgram(command.takeFirst());
        m_process.setArguments(command);
        m_process.start();
        QVERIFY(m_process.waitForStarted());
    }

    tztest::TempWorkDir m_workDir;
    QProcess m_process; // last: its end comes before that of its folder
};

} // namespace

void TestProgram::asksForDevicesAtStart()
{
    tzsim::Simulator simulator;
    simulator.addBox({.index = 0, .canChannels = 2, .linChannels = 1});
    QVERIFY(simulator.start());
    Program program;
    program.start();
    QVERIFY2(program.logs("Scan to device 0"), program.log().constData());
    QVERIFY(program.log().contains("CAN channels=2, LIN channels=1"));
    QVERIFY(program.logs(dialogLine));
    QVERIFY2(program.endsCleanlyAfter(SIGTERM), program.log().constData());
}

void TestProgram::loadsTheDatabasesOfTheLastRunAtStart()
{
    Program program;
    program.putFile(QStringLiteral("config/dbc_manager.json"),
                    R"({"dbcFiles": [{"filePath": "a.dbc"}, {"filePath": "gone.dbc"}],
                        "customFileMap": {"vci_dbc_view": "a.dbc"}})");
    program.putFile(QStringLiteral("a.dbc"), "VERSION \"\"\nNS_ :\n\tCM_\nBS_:\nBU_: Ecu\n"
                                             "BO_ 1 Status: 8 Ecu\n SG_ S : 0|8@1+ (1,0) [0|255] \"\" Ecu\n");
    program.putFile(QStringLiteral("config/ldf_manager.json"), R"({"ldfFiles": [{"filePath": "gone.ldf"}]})");
    program.start();
    QVERIFY2(program.logs("Loaded 1 DBC history files and 1 custom map"), program.log().constData());
    QVERIFY2(program.logs("Loaded 0 LDF history files and 0 custom map"), program.log().constData());
    QVERIFY(program.log().contains("DBC file no longer exists: gone.dbc"));
    QVERIFY(program.log().contains("LDF file no longer exists: gone.ldf"));
    QVERIFY(program.logs(dialogLine));
    QVERIFY2(program.endsCleanlyAfter(SIGTERM), program.log().constData());
}

void TestProgram::aSignalEndsItCleanly_data()
{
    QTest::addColumn<int>("signalNumber");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGHUP") << SIGHUP;
}

void TestProgram::aSignalEndsItCleanly()
{
    QFETCH(int, signalNumber);
    Program program;
    program.start();
    QVERIFY2(program.logs(dialogLine), program.log().constData());
    QVERIFY2(program.endsCleanlyAfter(signalNumber), program.log().constData());
}

void TestProgram::aSignalDuringTheScanEndsItSoon()
{
    Program program;
    program.start();
    QVERIFY2(program.logs(dialogLine), program.log().constData()); // the scan began just before and lasts 2 s
    QElapsedTimer timer;
    timer.start();
    QVERIFY2(program.endsCleanlyAfter(SIGTERM), program.log().constData());
    QVERIFY2(timer.elapsed() < soonMs, qPrintable(QString::number(timer.elapsed())));
}

void TestProgram::aChannelOpenedUnderTheDialogIsClosedOnTheBoxAfterASignal()
{
    tzsim::Simulator simulator;
    tzsim::Box &box = simulator.addBox({.index = 0, .canChannels = 2, .linChannels = 1});
    QVERIFY(simulator.start());
    Program program;
    program.startRole(tztest::channelUnderDialogRole);
    QVERIFY(program.says(tztest::channelOpenLine));
    QCOMPARE(box.openChannels(), 1);
    QVERIFY2(program.endsCleanlyAfter(SIGTERM), program.log().constData());
    QCOMPARE(box.openChannels(), 0);
}

// The frames of the load carry their number in the first four data bytes, the lowest first.
void TestProgram::aSignalDuringARecordingLeavesAWholeFile()
{
    tzsim::Simulator simulator;
    tzsim::Box &box = simulator.addBox({.index = 0, .canChannels = 2, .linChannels = 1});
    QVERIFY(simulator.start());
    Program program;
    program.startRole(tztest::recordingRole);
    QVERIFY(program.says(tztest::recordingLine));
    box.startLoad({.framesPerSecond = 5000});
    const auto lines = [&] { return program.file(tztest::recordingPath).split('\n'); };
    QVERIFY(tztest::waitFor([&] { return lines().size() > 1000; }));
    QVERIFY2(program.endsCleanlyAfter(SIGTERM), program.log().constData());

    QList<QByteArray> written = lines();
    QVERIFY(written.takeLast().isEmpty());
    QCOMPARE(written.takeLast(), QByteArray("End TriggerBlock"));
    const QList<QByteArray> frames = written.mid(written.indexOf("Begin TriggerBlock") + 1);
    QVERIFY(frames.size() > 900);
    for (int i = 0; i < frames.size(); ++i) {
        const auto number = static_cast<unsigned>(i);
        const QByteArray data =
            QByteArray::fromStdString(fmt::format(" d 8 {:02x} {:02x} ", number & 0xFF, number >> 8 & 0xFF));
        QVERIFY2(frames[i].contains(data), frames[i].constData());
    }
}

void TestProgram::aSignalDuringAConversionEndsItSoon()
{
    constexpr int frames = 300'000; // half a minute and more at the speed of the role
    tztest::BlfBytes objects;
    for (int i = 0; i < frames / 1000; ++i)
        tztest::appendObject(objects, 1, tztest::bodyBytes(tztest::CanMessageBody{}));
    tztest::BlfTestWriter log;
    for (int i = 0; i < 1000; ++i)
        log.addRaw(objects);
    const tztest::BlfBytes file = log.file();
    Program program;
    program.putFile(QString::fromLatin1(tztest::conversionInput),
                    QByteArray(reinterpret_cast<const char *>(file.data()), static_cast<int>(file.size())));
    program.startRole(tztest::conversionRole);
    QVERIFY(program.says(tztest::conversionLine));
    QElapsedTimer timer;
    timer.start();
    QVERIFY2(program.endsCleanlyAfter(SIGTERM), program.log().constData());
    QVERIFY2(timer.elapsed() < soonMs, qPrintable(QString::number(timer.elapsed())));
    QVERIFY(program.file(tztest::conversionOutput).isEmpty());
}

void TestProgram::aCloseThatHangsEndsInAnAbort()
{
    Program program;
    program.startRole(tztest::hangingCloseRole);
    QVERIFY(program.process().waitForFinished(endLimitMs));
    QCOMPARE(program.process().exitStatus(), QProcess::CrashExit);
    QCOMPARE(program.process().exitCode(), SIGABRT); // of a crash it is the signal
}

void TestProgram::withoutAnInterfaceItStarts()
{
    QProcess probe;
    probe.start(QStringLiteral("unshare"), {QStringLiteral("-rn"), QStringLiteral("true")});
    if (!probe.waitForFinished() || probe.exitStatus() != QProcess::NormalExit || probe.exitCode() != 0)
        QSKIP("network namespaces are not permitted here");
    Program program;
    program.start({QStringLiteral("unshare"), QStringLiteral("-rn")});
    QVERIFY2(program.logs("No active IPv4 network interfaces found."), program.log().constData());
    QVERIFY(program.logs(dialogLine));
    QVERIFY2(program.endsCleanlyAfter(SIGTERM), program.log().constData());
}

void TestProgram::withoutADisplayTheToolkitTellsWhy()
{
    Program program;
    program.environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    program.environment.remove(QStringLiteral("DISPLAY"));
    program.start();
    QVERIFY(program.process().waitForFinished(endLimitMs));
    QVERIFY(program.process().exitStatus() == QProcess::CrashExit || program.process().exitCode() != 0);
    QVERIFY(program.process().readAllStandardError().contains("xcb"));
}
