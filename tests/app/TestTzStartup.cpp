// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/TestTzStartup.h"

#include "app/TZBenchWindow.h"
#include "app/TzApplication.h"
#include "app/TzBenchWindowHelper.h"
#include "app/TzCrashHook.h"
#include "app/TzStartup.h"
#include "app/VciBuildInfo.h"
#include "common/Log.h"
#include "tests/support/IconCompare.h"
#include "tests/support/LogCapture.h"
#include "tests/support/MessageBoxDriver.h"
#include "tests/support/TempWorkDir.h"
#include "tests/support/WaitFor.h"
#include "tools/simulator/Simulator.h"
#include "vci/TzVciDeviceManager.h"
#include "vci/TzVciDeviceScanner.h"
#include "vci/TzVciDeviceStore.h"
#include "vci/TzVciTypes.h"

#include <QDialog>
#include <QFile>
#include <QMessageBox>
#include <QTimer>
#include <QtTest>

#include <stdexcept>

struct TestTzStartup::Environment
{
    tztest::TempWorkDir workDir;
    tztest::LogCapture log;
    tztest::MessageBoxDriver driver;
};

namespace {

TzApplication &application()
{
    return *static_cast<TzApplication *>(QCoreApplication::instance());
}

void writeFile(const QString &path, const QByteArray &content)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

void TestTzStartup::init()
{
    m_environment = new Environment;
}

void TestTzStartup::cleanup()
{
    TzVciDeviceManager::instance().closeAllDevices();
    Common::logStop(); // the next test logs into a folder of its own
    delete m_environment;
    m_environment = nullptr;
}

void TestTzStartup::metaTypeAndAttributes()
{
    TzStartup::prepareToolkit();
    QVERIFY(QCoreApplication::testAttribute(Qt::AA_EnableHighDpiScaling));
    QVERIFY(QCoreApplication::testAttribute(Qt::AA_UseHighDpiPixmaps));
    QVERIFY(QMetaType::type("TzVciCanDataType") != QMetaType::UnknownType);
    TzStartup::dressApplication(application());
    QVERIFY(showsIcon(application().windowIcon(), VciBuildInfo::applicationIcon));
}

void TestTzStartup::theLogBeginsWithTheBanner()
{
    TzStartup::startLog();
    QCOMPARE(m_environment->driver.seen().size(), std::size_t{0});
    Common::logStop();
    const QByteArray log = readFile(QStringLiteral("logs/TZBench.log"));
    for (const char *part : {"TZBench", "v1.6.0", "zarnek", "windows"})
        QVERIFY2(log.contains(part), log.constData());
}

void TestTzStartup::anUnwritableLogDirectoryShowsOneErrorBoxAndTheMainWindowOpens()
{
    writeFile(QStringLiteral("logs"), "a file where the directory should be");
    m_environment->driver.expectBox(QMessageBox::Ok);
    TzStartup::startLog();
    QCOMPARE(m_environment->driver.seen().size(), std::size_t{1});
    QCOMPARE(m_environment->driver.seen().front().title, QStringLiteral("error"));
    QVERIFY(!m_environment->driver.seen().front().text.isEmpty());
    QCOMPARE(m_environment->driver.seen().front().textFormat, Qt::PlainText); // it names a file
    const auto window = TzStartup::showMainWindow(application());
    QVERIFY(window->isVisible() && window->isMaximized());
    QCOMPARE(m_environment->driver.seen().size(), std::size_t{1});
    TzStartup::finish();
}

void TestTzStartup::theFirstWindowsAreACanViewAndTheSettingsDialog()
{
    const auto window = TzStartup::showMainWindow(application());
    std::size_t viewsBefore = 0;
    QString title;
    m_environment->driver.expectDialog([&](QDialog *dialog) {
        viewsBefore = window->helper()->views().views().size();
        title = dialog->windowTitle();
        dialog->reject();
    });
    window->openFirstWindows();
    QCOMPARE(viewsBefore, std::size_t{1});
    QVERIFY(window->helper()->views().hasFamily(TzVciProtocolId::can));
    QCOMPARE(title, QStringLiteral("Device Settings"));
    TzStartup::finish();
}

void TestTzStartup::aCorruptConfigurationStillOpensTheFirstWindows()
{
    writeFile(QStringLiteral("config/vci/vci_config.json"), "{\"devices\": [{\"deviceIndex\": 0, ]]");
    const auto window = TzStartup::showMainWindow(application());
    m_environment->driver.expectDialog([](QDialog *dialog) { dialog->reject(); });
    window->openFirstWindows();
    QCOMPARE(m_environment->driver.seen().size(), std::size_t{0});
    QCOMPARE(window->helper()->views().views().size(), std::size_t{1});
    TzStartup::finish();
}

void TestTzStartup::anUnwritableConfigurationStillOpensTheFirstWindows()
{
    writeFile(QStringLiteral("config"), "a file where the directory should be");
    const auto window = TzStartup::showMainWindow(application());
    m_environment->driver.expectDialog([](QDialog *dialog) { dialog->reject(); });
    window->openFirstWindows();
    QCOMPARE(m_environment->driver.seen().size(), std::size_t{0});
    QVERIFY(m_environment->log.has(3, "Unable to save configuration file: Directory does not exist"));
    TzStartup::finish();
}

void TestTzStartup::finishCancelsTheScan()
{
    QElapsedTimer timer;
    timer.start();
    TzStartup::startBackgroundLoad();
    QVERIFY(timer.elapsed() < 1000); // not waited for
    TzStartup::finish();
    QVERIFY(timer.elapsed() < 1800); // a scan lasts 2000 ms
    QVERIFY(!TzVciDeviceScanner::instance().isScanning());
}

void TestTzStartup::aStandardExceptionReturnsMinusOne()
{
    m_environment->driver.expectBox(QMessageBox::Ok);
    QCOMPARE(TzStartup::runGuarded([]() -> int { throw std::runtime_error("what happened"); }), -1);
    QCOMPARE(m_environment->driver.seen().size(), std::size_t{1});
    QCOMPARE(m_environment->driver.seen().front().title, QStringLiteral("异常"));
    QCOMPARE(m_environment->driver.seen().front().text, QStringLiteral("what happened"));
    QCOMPARE(m_environment->driver.seen().front().icon, static_cast<int>(QMessageBox::Critical));
    QVERIFY(m_environment->log.has(1, "System abnormality, exiting..."));
    QCOMPARE(TzStartup::runGuarded([] { return 7; }), 7);
}

void TestTzStartup::anyOtherExceptionReturnsMinusTwo()
{
    m_environment->driver.expectBox(QMessageBox::Ok);
    QCOMPARE(TzStartup::runGuarded([]() -> int { throw 5; }), -2);
    QCOMPARE(m_environment->driver.seen().front().title, QStringLiteral("未知异常"));
    QCOMPARE(m_environment->driver.seen().front().text, QStringLiteral("程序发生了未知异常并即将退出。"));
}

void TestTzStartup::anExceptionOutOfASlotClosesTheDevicesAndStopsTheLogBeforeTheBox()
{
    tzsim::Simulator simulator;
    tzsim::Box &box = simulator.addBox({.index = 3});
    QVERIFY(simulator.start());
    TzVciDeviceStore::instance().addDevice(3, TzVciDeviceConfig(2, 1));
    TzStartup::startLog();
    const auto window = TzStartup::showMainWindow(application());
    TzVciDeviceManager &manager = TzVciDeviceManager::instance();
    QCOMPARE(manager.openDevice(3), TzVciResult::ok);
    QCOMPARE(manager.openChannel(3, TzVciProtocolId::can, 0), TzVciResult::ok);

    bool boxSeen = false;
    int openAtBox = -1;
    QByteArray logAtBox;
    QTimer watcher;
    connect(&watcher, &QTimer::timeout, this, [&] {
        if (boxSeen || !qobject_cast<QMessageBox *>(QApplication::activeModalWidget()))
            return;
        boxSeen = true;
        openAtBox = box.openChannels();
        Common::logError("The box is up"); // no longer written
        logAtBox = readFile(QStringLiteral("logs/TZBench.log"));
    });
    watcher.start(0);
    m_environment->driver.expectBox(QMessageBox::Ok);
    QTimer::singleShot(0, qApp, [] { throw std::runtime_error("escaped a slot"); });
    QCOMPARE(TzStartup::runGuarded([] { return application().run(); }), -1);
    QVERIFY(boxSeen);
    QCOMPARE(openAtBox, 0);
    QVERIFY(logAtBox.contains("System abnormality, exiting..."));
    QVERIFY(logAtBox.contains("Closed all devices"));
    QVERIFY(m_environment->log.has(3, "The box is up"));
    QCOMPARE(readFile(QStringLiteral("logs/TZBench.log")), logAtBox);
    QVERIFY(!logAtBox.contains("The box is up"));
    QCOMPARE(m_environment->driver.seen().front().text, QStringLiteral("escaped a slot"));
    TzStartup::finish();
}

void TestTzStartup::theCrashHookMayRunTwice()
{
    TzStartup::startLog();
    tzCrashHook();
    tzCrashHook();
    QCOMPARE(m_environment->log.count(1, "System abnormality, exiting..."), std::size_t{2});
    QCOMPARE(readFile(QStringLiteral("logs/TZBench.log")).count("System abnormality, exiting..."), 1);
}

void TestTzStartup::quitTakesTheCloseStepsWithoutAQuestion()
{
    tzsim::Simulator simulator;
    tzsim::Box &box = simulator.addBox({.index = 4});
    QVERIFY(simulator.start());
    TzVciDeviceStore::instance().addDevice(4, TzVciDeviceConfig(2, 1));
    const auto window = TzStartup::showMainWindow(application());
    QCOMPARE(TzVciDeviceManager::instance().openDevice(4), TzVciResult::ok);
    QCOMPARE(TzVciDeviceManager::instance().openChannel(4, TzVciProtocolId::lin, 0), TzVciResult::ok);
    QTimer::singleShot(0, qApp, &QCoreApplication::quit);
    QCOMPARE(application().run(), 0);
    QCOMPARE(m_environment->driver.seen().size(), std::size_t{0});
    QVERIFY(!window->isVisible());
    QCOMPARE(box.openChannels(), 0);
    QVERIFY(m_environment->log.has(1, "Closed all devices"));
    TzStartup::finish();
}
