// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/CrashHandler.h"

#include "common/platform/Socket.h"
#include "tests/support/TempWorkDir.h"
#include "vci/TzVciNetwork.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>

#include <array>
#include <csignal>

using testing::HasSubstr;
using testing::Not;

namespace {

constexpr int patienceMs = 20'000;

// A sanitizer's own handler stands behind ours: with it the process ends by an exit code.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool underSanitizer = true;
#else
constexpr bool underSanitizer = false;
#endif

class CrashHandlerTest : public testing::Test
{
protected:
    CrashHandlerTest() { m_child.setWorkingDirectory(QDir::currentPath()); }

    void start(const QString &mode, const QStringList &more = {})
    {
        const QString program = QCoreApplication::applicationDirPath() + QStringLiteral("/crash_child");
        m_child.start(program, QStringList{mode} + more);
        ASSERT_TRUE(m_child.waitForStarted(patienceMs));
    }
    void waitForEnd(int limitMs = patienceMs)
    {
        ASSERT_TRUE(m_child.state() == QProcess::NotRunning || m_child.waitForFinished(limitMs));
        m_output += m_child.readAllStandardOutput().toStdString();
        m_errors = m_child.readAllStandardError().toStdString();
    }
    void run(const QString &mode, const QStringList &more = {})
    {
        start(mode, more);
        waitForEnd();
    }
    void waitForReady()
    {
        while (m_output.find("ready") == std::string::npos) {
            ASSERT_TRUE(m_child.waitForReadyRead(patienceMs));
            m_output += m_child.readAllStandardOutput().toStdString();
        }
    }
    void sendSignal(int signal) { ::kill(static_cast<pid_t>(m_child.processId()), signal); }
    // Waits until the child is ready, asks it to end, waits for the end. The thread sanitizer now and then loses a
    // signal that comes between two system calls, and a second one does no harm.
    void askToEnd(int signal)
    {
        waitForReady();
        constexpr int attempts = 5;
        for (int i = 0; i < attempts; ++i) {
            sendSignal(signal);
            if (m_child.waitForFinished(patienceMs / attempts))
                break;
        }
        waitForEnd(0);
    }

    void expectDiedBy(int signal)
    {
        if (underSanitizer && m_child.exitStatus() == QProcess::NormalExit) {
            EXPECT_NE(m_child.exitCode(), 0);
            return;
        }
        EXPECT_EQ(m_child.exitStatus(), QProcess::CrashExit) << m_errors;
        EXPECT_EQ(m_child.exitCode(), signal);
    }
    static std::string logText()
    {
        QFile file(QStringLiteral("logs/TZBench.log"));
        return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : std::string();
    }

    tztest::TempWorkDir m_workDir;
    QProcess m_child;
    std::string m_output;
    std::string m_errors;
};

struct CrashCase
{
    const char *mode;
    int signal;
    const char *report;
};

class CrashRoadCase : public CrashHandlerTest, public testing::WithParamInterface<CrashCase>
{
};

TEST_P(CrashRoadCase, RunsTheHookWritesABacktraceAndDiesBySignal)
{
    run(QString::fromLatin1(GetParam().mode));
    expectDiedBy(GetParam().signal);
    EXPECT_EQ(m_output, "hook\n");
    const std::string log = logText();
    EXPECT_THAT(log, HasSubstr("[info] System abnormality, exiting..."));
    EXPECT_THAT(log, HasSubstr(GetParam().report));
    EXPECT_THAT(log, HasSubstr("crash_child")); // frames bear the program's name
    EXPECT_LT(log.find("System abnormality"), log.find(GetParam().report));
    EXPECT_THAT(m_errors, HasSubstr(GetParam().report));
}

INSTANTIATE_TEST_SUITE_P(Crashes, CrashRoadCase,
                         testing::Values(CrashCase{"segv", SIGSEGV, "[error] Fatal signal SIGSEGV"},
                                         CrashCase{"segv-on-thread", SIGSEGV, "[error] Fatal signal SIGSEGV"},
                                         CrashCase{"overflow", SIGSEGV, "[error] Fatal signal SIGSEGV"},
                                         CrashCase{"overflow-on-thread", SIGSEGV, "[error] Fatal signal SIGSEGV"},
                                         CrashCase{"abort", SIGABRT, "[error] Fatal signal SIGABRT"},
                                         CrashCase{"terminate", SIGABRT,
                                                   "[error] Fatal signal SIGABRT: nobody catches this"},
                                         CrashCase{"sent-from-outside", SIGSEGV, "[error] Fatal signal SIGSEGV"},
                                         CrashCase{"twice", SIGSEGV, "[error] Fatal signal SIGSEGV"},
                                         CrashCase{"setup-twice", SIGSEGV, "[error] Fatal signal SIGSEGV"}),
                         [](const auto &test) {
                             std::string name = test.param.mode;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

// The stack is broken more often than not where a program crashes: what looks at it comes last.
TEST_F(CrashHandlerTest, AFaultInTheUnwinderLosesTheBacktraceAlone)
{
    run(QStringLiteral("faulting-unwinder"));
    expectDiedBy(SIGSEGV);
    EXPECT_EQ(m_output, "hook\n");
    EXPECT_THAT(logText(), HasSubstr("[info] System abnormality, exiting..."));
    EXPECT_THAT(logText(), HasSubstr("[error] Fatal signal SIGSEGV"));
}

TEST_F(CrashHandlerTest, AnUnwinderThatHangsDoesNotKeepTheProcessAlive)
{
    run(QStringLiteral("hanging-unwinder"));
    expectDiedBy(SIGSEGV);
    EXPECT_EQ(m_output, "hook\n");
    EXPECT_THAT(logText(), HasSubstr("[error] Fatal signal SIGSEGV"));
}

TEST_F(CrashHandlerTest, AHookThatHangsIsLeftBehindAfterItsLimit)
{
    QElapsedTimer time;
    time.start();
    run(QStringLiteral("hanging-hook"));
    EXPECT_GE(time.elapsed(), 300);
    expectDiedBy(SIGSEGV);
    EXPECT_EQ(m_output, "hook\n");
    EXPECT_THAT(logText(), HasSubstr("Fatal signal SIGSEGV (the crash hook did not end in time)"));
}

TEST_F(CrashHandlerTest, AHookThatCrashesIsLeftBehind)
{
    run(QStringLiteral("crashing-hook"));
    expectDiedBy(SIGSEGV);
    EXPECT_EQ(m_output, "hook\n");
    EXPECT_THAT(logText(), HasSubstr("Fatal signal SIGSEGV"));
}

TEST_F(CrashHandlerTest, AHookThatThrowsIsToldInTheLog)
{
    run(QStringLiteral("throwing-hook"));
    expectDiedBy(SIGSEGV);
    EXPECT_THAT(logText(), HasSubstr("[error] Exception in the crash hook: hook threw"));
}

TEST_F(CrashHandlerTest, AHookThatExitsEndsTheProcess)
{
    run(QStringLiteral("exiting-hook"));
    EXPECT_EQ(m_output, "hook\n");
    EXPECT_TRUE(m_child.exitStatus() == QProcess::CrashExit || m_child.exitCode() != 0);
}

TEST_F(CrashHandlerTest, WithoutAHookTheBacktraceIsWrittenAllTheSame)
{
    run(QStringLiteral("no-hook"));
    expectDiedBy(SIGSEGV);
    EXPECT_EQ(m_output, "");
    EXPECT_THAT(logText(), HasSubstr("Fatal signal SIGSEGV"));
}

TEST_F(CrashHandlerTest, ACrashThatHoldsTheLogsLockEndsAllTheSame)
{
    run(QStringLiteral("in-the-log"));
    expectDiedBy(SIGSEGV);
    EXPECT_THAT(m_output, HasSubstr("hook\n"));
    EXPECT_THAT(logText(), HasSubstr("Fatal signal SIGSEGV"));
}

TEST_F(CrashHandlerTest, OpenChannelsAreClosedBeforeTheHookRuns)
{
    const auto box = Common::platform::SharedSocket::openUdp();
    const std::string host = TzVciNetwork::current().prefix + ".1";
    ASSERT_EQ(box.bind(host, 0), 0);
    ASSERT_EQ(box.setReceiveTimeout(patienceMs), 0);
    for (const char *mode : {"emergency", "emergency-hanging-hook"}) {
        start(QString::fromLatin1(mode), {QString::fromStdString(host), QString::number(box.localPort())});
        std::array<char, 100> buffer{};
        const auto received = box.receive(buffer);
        ASSERT_GT(received.size, 0);
        EXPECT_EQ(std::string(buffer.data(), static_cast<std::size_t>(received.size)), "close can 0");
        waitForEnd();
        expectDiedBy(SIGSEGV);
    }
}

class Termination : public CrashHandlerTest, public testing::WithParamInterface<int>
{
};

TEST_P(Termination, TheSignalRunsTheCallbackInNormalContext)
{
    start(QStringLiteral("quit"));
    askToEnd(GetParam());
    EXPECT_EQ(m_child.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(m_child.exitCode(), 0);
    EXPECT_EQ(m_output, "ready\nclosing\n");
}

TEST_P(Termination, AProcessThatDoesNotEndInTimeGoesTheCrashRoad)
{
    start(QStringLiteral("quit-hangs"));
    askToEnd(GetParam());
    EXPECT_EQ(m_child.exitStatus(), QProcess::CrashExit);
    EXPECT_EQ(m_child.exitCode(), GetParam());
    EXPECT_EQ(m_output, "ready\nclosing\nhook\n");
    EXPECT_THAT(logText(), HasSubstr("[error] Not ended in time after SIG"));
}

INSTANTIATE_TEST_SUITE_P(Signals, Termination, testing::Values(SIGTERM, SIGINT, SIGHUP));

TEST_F(CrashHandlerTest, ASecondSignalRunsTheCallbackNoSecondTime)
{
    start(QStringLiteral("quit-hangs"));
    waitForReady();
    sendSignal(SIGTERM);
    askToEnd(SIGINT);
    EXPECT_EQ(m_output, "ready\nclosing\nhook\n");
}

TEST_F(CrashHandlerTest, ACallbackThatThrowsIsToldInTheLog)
{
    start(QStringLiteral("quit-throws"));
    askToEnd(SIGTERM);
    EXPECT_THAT(logText(), HasSubstr("[error] Exception in the termination callback: no way"));
}

TEST_F(CrashHandlerTest, ACallbackMayEndTheProcessItself)
{
    start(QStringLiteral("quit-exits"));
    askToEnd(SIGTERM);
    EXPECT_EQ(m_child.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(m_child.exitCode(), 7);
    EXPECT_EQ(m_output, "ready\n");
}

TEST_F(CrashHandlerTest, WithoutACallbackTheSignalIsTheSystems)
{
    start(QStringLiteral("quit-cleared"));
    askToEnd(SIGTERM);
    EXPECT_EQ(m_child.exitCode(), SIGTERM);
    EXPECT_EQ(m_output, "ready\n");
}

TEST_F(CrashHandlerTest, AfterTheShutdownNothingIsCaught)
{
    run(QStringLiteral("shutdown"));
    expectDiedBy(SIGSEGV);
    EXPECT_EQ(m_output, "");
}

TEST_F(CrashHandlerTest, AProcessThatEndsWellEndsWell)
{
    run(QStringLiteral("normal"));
    EXPECT_EQ(m_child.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(m_child.exitCode(), 0) << m_errors;
    EXPECT_EQ(m_output, "");
}

} // namespace
