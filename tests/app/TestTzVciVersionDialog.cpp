// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/TestTzVciVersionDialog.h"

#include "app/TzVciVersionDialog.h"
#include "app/VciBuildInfo.h"
#include "common/ui/WorkbenchStyle.h"
#include "tests/app/DialogWithBoxes.h"
#include "tests/support/DocumentOpener.h"
#include "tests/support/IconCompare.h"
#include "tests/support/LogCapture.h"
#include "tests/support/MessageBoxDriver.h"
#include "tests/support/WaitFor.h"

#include <QApplication>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QtTest>

namespace {

const QString program = QStringLiteral("TZBench");
const QString version = QStringLiteral("v1.6.0");

class ShownDialog : public TzVciVersionDialog
{
public:
    explicit ShownDialog(tztest::DialogWithBoxes &bench)
        : TzVciVersionDialog(&bench.manager, &bench.store, program, version)
    {
        show();
    }
    QPushButton *button(const char *name) const { return findChild<QPushButton *>(QString::fromLatin1(name)); }
    QComboBox *combo() const { return findChild<QComboBox *>(QStringLiteral("comboDevice")); }
    void click(const char *name) const { QTest::mouseClick(button(name), Qt::LeftButton); }
};

} // namespace

void TestTzVciVersionDialog::initTestCase()
{
    Common::applyWorkbenchStyle(*qApp);
}

void TestTzVciVersionDialog::showsTitleTextsAndDevices()
{
    tztest::DialogWithBoxes bench(2);
    const ShownDialog dialog(bench);
    QCOMPARE(dialog.windowTitle(), QStringLiteral("TZBench Version Information"));
    QVERIFY(showsIcon(dialog.windowIcon(), ":/resource/copyright.png"));
    QStringList groups;
    for (const auto *group : dialog.findChildren<QGroupBox *>())
        groups.append(group->title());
    QCOMPARE(groups, (QStringList{"Software Information", "Hardware Version", "Help"}));
    QCOMPARE(dialog.button("buttonUpdate")->text(), QStringLiteral("Check for Updates"));
    QCOMPARE(dialog.button("buttonQuery")->text(), QStringLiteral("Query"));
    QCOMPARE(dialog.button("buttonHelp")->text(), QStringLiteral("Open Help Document"));
    QCOMPARE(dialog.combo()->count(), 2);
    QCOMPARE(dialog.combo()->itemText(0), QStringLiteral("Device 0"));
    QCOMPARE(dialog.combo()->itemText(1), QStringLiteral("Device 1"));
}

void TestTzVciVersionDialog::versionShowsTheDateAndTimeOfTheBuild()
{
    tztest::DialogWithBoxes bench;
    const ShownDialog dialog(bench);
    const QString text = dialog.findChild<QLabel *>(QStringLiteral("labelVersion"))->text();
    // A day of one digit has a blank before it.
    const QRegularExpression form(
        QStringLiteral("^v1\\.6\\.0 [A-Z][a-z]{2} [ 1-3][0-9] [0-9]{4} [0-9]{2}:[0-9]{2}:[0-9]{2}$"));
    QVERIFY2(form.match(text).hasMatch(), qPrintable(text));
    QCOMPARE(text, QStringLiteral("v1.6.0 %1 %2").arg(VciBuildInfo::buildDate(), VciBuildInfo::buildTime()));
}

void TestTzVciVersionDialog::withoutADeviceNothingCanBeQueried()
{
    tztest::DialogWithBoxes bench;
    const ShownDialog dialog(bench);
    QVERIFY(!dialog.button("buttonQuery")->isEnabled());
    QVERIFY(!dialog.combo()->isEnabled());
    QVERIFY(dialog.button("buttonUpdate")->isEnabled());
    QVERIFY(dialog.button("buttonHelp")->isEnabled());
}

void TestTzVciVersionDialog::queryShowsTheFirmwareVersionOfTheChosenDevice()
{
    tztest::DialogWithBoxes bench(2);
    QVERIFY2(bench.isReady, bench.error.c_str());
    QCOMPARE(bench.manager.openDevice(1), 0);
    const ShownDialog dialog(bench);
    dialog.combo()->setCurrentIndex(1);
    tztest::MessageBoxDriver driver;
    driver.expectBox(QMessageBox::Ok);
    dialog.click("buttonQuery");
    QVERIFY(driver.allMet());
    QCOMPARE(driver.seen().front().title, QStringLiteral("Version"));
    QCOMPARE(driver.seen().front().text, QStringLiteral("Device 1 Firmware version: v1.20.255.1"));
    QVERIFY(dialog.isVisible());
}

void TestTzVciVersionDialog::queryOnAClosedDeviceSendsNothing()
{
    tztest::DialogWithBoxes bench(2);
    QVERIFY2(bench.isReady, bench.error.c_str());
    QCOMPARE(bench.manager.openDevice(1), 0);
    QCOMPARE(bench.manager.openDevice(0), 0);
    QCOMPARE(bench.manager.closeDevice(0), 0);
    const ShownDialog dialog(bench);
    const auto before = bench.simulator.box(0).counters().datagramsIn;
    const auto otherBefore = bench.simulator.box(1).counters().framesIn;
    tztest::MessageBoxDriver driver;
    driver.expectBox(QMessageBox::Ok);
    dialog.click("buttonQuery");
    QVERIFY(driver.allMet());
    QCOMPARE(driver.seen().front().title, QStringLiteral("Error"));
    QCOMPARE(driver.seen().front().text, QStringLiteral("The current Device 0 is not open"));
    QCOMPARE(bench.simulator.box(0).counters().datagramsIn, before);
    QCOMPARE(bench.simulator.box(1).counters().framesIn, otherBefore);
}

void TestTzVciVersionDialog::queryOnADeviceLostByItsLinkSendsNothing()
{
    tztest::DialogWithBoxes bench(1);
    QVERIFY2(bench.isReady, bench.error.c_str());
    QCOMPARE(bench.manager.openDevice(0), 0);
    bench.simulator.box(0).vanish();
    bench.manager.getDevice(0)->send(std::vector<char>(1, 'x')); // meets the closed port
    QVERIFY(tztest::waitFor([&] { return !bench.store.isDeviceOpen(0); }));
    QVERIFY(bench.manager.getDevice(0));
    QVERIFY2(bench.simulator.box(0).comeBack(&bench.error), bench.error.c_str());
    const auto before = bench.simulator.box(0).counters().datagramsIn;
    const ShownDialog dialog(bench);
    tztest::MessageBoxDriver driver;
    driver.expectBox(QMessageBox::Ok);
    dialog.click("buttonQuery");
    QCOMPARE(driver.seen().front().text, QStringLiteral("The current Device 0 is not open"));
    QCOMPARE(bench.simulator.box(0).counters().datagramsIn, before);
}

void TestTzVciVersionDialog::queryWithoutAnAnswerShowsZeroes()
{
    tztest::DialogWithBoxes bench(1);
    QVERIFY2(bench.isReady, bench.error.c_str());
    QCOMPARE(bench.manager.openDevice(0), 0);
    bench.simulator.box(0).setSilent(true);
    const ShownDialog dialog(bench);
    const tztest::LogCapture log;
    tztest::MessageBoxDriver driver;
    driver.expectBox(QMessageBox::Ok);
    dialog.click("buttonQuery");
    QVERIFY(driver.allMet());
    QCOMPARE(driver.seen().front().text, QStringLiteral("Device 0 Firmware version: v0.0.0.0"));
    QVERIFY(log.has(3, "Request Device0 timed out after 500 ms"));
    QVERIFY(!QGuiApplication::overrideCursor());
}

void TestTzVciVersionDialog::checkForUpdatesAsks()
{
    tztest::DialogWithBoxes bench;
    const ShownDialog dialog(bench);
    const tztest::LogCapture log;
    dialog.click("buttonUpdate");
    QVERIFY(log.has(0, "No update service is configured (silent: false)"));
}

void TestTzVciVersionDialog::helpOpensTheManual()
{
    tztest::DialogWithBoxes bench;
    QVERIFY(QDir().mkpath(QStringLiteral("doc")));
    QFile manual(QStringLiteral("doc/TZBench.pdf"));
    QVERIFY(manual.open(QIODevice::WriteOnly));
    const tztest::DocumentOpener opener;
    const ShownDialog dialog(bench);
    dialog.click("buttonHelp");
    QCOMPARE(opener.openedFile(), QFileInfo(manual).canonicalFilePath());
}

void TestTzVciVersionDialog::tabOrder()
{
    tztest::DialogWithBoxes bench(1);
    ShownDialog dialog(bench);
    dialog.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QCOMPARE(dialog.focusWidget(), dialog.button("buttonUpdate"));
    for (QWidget *next : {static_cast<QWidget *>(dialog.combo()), static_cast<QWidget *>(dialog.button("buttonQuery")),
                          static_cast<QWidget *>(dialog.button("buttonHelp"))}) {
        QTest::keyClick(&dialog, Qt::Key_Tab);
        QCOMPARE(dialog.focusWidget(), next);
    }
}
