// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/TestTZVciTimeDialog.h"

#include "app/TZVciTimeDialog.h"
#include "common/ui/WorkbenchStyle.h"
#include "tests/app/DialogWithBoxes.h"
#include "tests/support/IconCompare.h"
#include "tests/support/MessageBoxDriver.h"
#include "vci/TzVciProtocol.h"
#include "vci/TzVciTypes.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QtTest>

#include <algorithm>

namespace {

using Mode = Common::TimestampDisplayMode;

struct Parts
{
    explicit Parts(TZVciTimeDialog &dialog)
        : factor(dialog.findChild<QComboBox *>(QStringLiteral("comboFactor")))
        , reset(dialog.findChild<QPushButton *>(QStringLiteral("buttonReset")))
        , ok(dialog.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok))
        , cancel(dialog.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Cancel))
    {
        for (int mode = 0; mode < 5; ++mode)
            modes.append(dialog.findChild<QRadioButton *>(QStringLiteral("radioMode%1").arg(mode)));
        dialog.show();
    }

    QList<QRadioButton *> modes;
    QComboBox *factor;
    QPushButton *reset;
    QPushButton *ok;
    QPushButton *cancel;
};

void click(QAbstractButton *button)
{
    QTest::mouseClick(button, Qt::LeftButton);
}

qint64 baseTimeRequests(const tzsim::Box &box)
{
    const auto requests = box.requests();
    return std::count_if(requests.begin(), requests.end(), [](const tzsim::Request &request) {
        return request.protocol == TzVciProtocolId::device && request.command == TzVciCommand::readBaseTime;
    });
}

} // namespace

void TestTZVciTimeDialog::initTestCase()
{
    Common::applyWorkbenchStyle(*qApp);
}

void TestTZVciTimeDialog::showsTitleTextsAndItems()
{
    tztest::DialogWithBoxes bench;
    TZVciTimeDialog dialog(&bench.manager);
    const Parts parts(dialog);
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Device Time Settings"));
    QVERIFY(showsIcon(dialog.windowIcon(), ":/resource/time.png"));
    QStringList groups;
    for (const auto *group : dialog.findChildren<QGroupBox *>())
        groups.append(group->title());
    QCOMPARE(groups, (QStringList{"Timestamp Display Mode", "Time Precision"}));
    QStringList modes;
    for (const auto *mode : parts.modes)
        modes.append(mode->text());
    QCOMPARE(modes, (QStringList{"Absolute Time (2025-05-07 14:30:22.123456)", "Relative Time (3.123456 s)",
                                 "Global Relative Time (25.678901 s)", QStringLiteral("Delta Time (Δ 0.001234 s)"),
                                 "Time of Day (14:30:22.123456)"}));
    const QList<std::pair<QString, double>> factors{{"Seconds (1.0)", 1.0},
                                                    {"Milliseconds (1000.0)", 1e3},
                                                    {"Microseconds (1000000.0)", 1e6},
                                                    {"Nanoseconds (1000000000.0)", 1e9}};
    QCOMPARE(parts.factor->count(), factors.size());
    for (int i = 0; i < factors.size(); ++i) {
        QCOMPARE(parts.factor->itemText(i), factors.at(i).first);
        QCOMPARE(parts.factor->itemData(i).toDouble(), factors.at(i).second);
    }
    QCOMPARE(dialog.findChild<QLabel *>(QStringLiteral("labelNote"))->text(),
             QStringLiteral("Factor determines the time precision: 1.0=seconds, 1000.0=milliseconds, "
                            "1000000.0=microseconds"));
    QCOMPARE(parts.reset->text(), QStringLiteral("Reset Time"));
    QCOMPARE(parts.reset->toolTip(), QStringLiteral("Reset the global reference time to the current time"));
    QCOMPARE(parts.ok->text(), QStringLiteral("OK"));
    QCOMPARE(parts.cancel->text(), QStringLiteral("Cancel"));
}

void TestTZVciTimeDialog::showsTheModeAndTheFactorOfTheManager()
{
    tztest::DialogWithBoxes bench;
    {
        TZVciTimeDialog dialog(&bench.manager);
        const Parts parts(dialog);
        QVERIFY(parts.modes.at(2)->isChecked()); // the defaults
        QCOMPARE(parts.factor->currentText(), QStringLiteral("Microseconds (1000000.0)"));
    }
    bench.manager.setDisplayMode(Mode::DeltaTime);
    bench.manager.timeManager().setTimeScaleFactor(1e3);
    TZVciTimeDialog dialog(&bench.manager);
    const Parts parts(dialog);
    QVERIFY(parts.modes.at(3)->isChecked());
    QCOMPARE(parts.factor->currentText(), QStringLiteral("Milliseconds (1000.0)"));
    QCOMPARE(parts.factor->count(), 4);
}

void TestTZVciTimeDialog::okTakesModeAndFactorOver()
{
    tztest::DialogWithBoxes bench;
    TZVciTimeDialog dialog(&bench.manager);
    const Parts parts(dialog);
    click(parts.modes.at(4));
    parts.factor->setCurrentIndex(3);
    QCOMPARE(bench.manager.displayMode(), Mode::GlobalRelativeTime); // not before OK
    QCOMPARE(bench.manager.timeManager().getTimeScaleFactor(), 1e6);
    click(parts.ok);
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(bench.manager.displayMode(), Mode::TimeOfDay);
    QCOMPARE(bench.manager.timeManager().getTimeScaleFactor(), 1e9);
}

void TestTZVciTimeDialog::everyModeIsTaken_data()
{
    QTest::addColumn<int>("mode");
    for (int mode = 0; mode < 5; ++mode)
        QTest::newRow(qPrintable(QString::number(mode))) << mode;
}

void TestTZVciTimeDialog::everyModeIsTaken()
{
    QFETCH(int, mode);
    tztest::DialogWithBoxes bench;
    bench.manager.setDisplayMode((mode + 1) % 5);
    TZVciTimeDialog dialog(&bench.manager);
    const Parts parts(dialog);
    click(parts.modes.at(mode));
    click(parts.ok);
    QCOMPARE(int(bench.manager.displayMode()), mode);
}

void TestTZVciTimeDialog::cancelChangesNothing()
{
    tztest::DialogWithBoxes bench;
    TZVciTimeDialog dialog(&bench.manager);
    const Parts parts(dialog);
    click(parts.modes.at(0));
    parts.factor->setCurrentIndex(0);
    click(parts.cancel);
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
    QCOMPARE(bench.manager.displayMode(), Mode::GlobalRelativeTime);
    QCOMPARE(bench.manager.timeManager().getTimeScaleFactor(), 1e6);
}

void TestTZVciTimeDialog::aFactorSetThroughAnotherPathShowsAsCustomAndIsKept()
{
    tztest::DialogWithBoxes bench;
    bench.manager.timeManager().setTimeScaleFactor(2.0);
    TZVciTimeDialog dialog(&bench.manager);
    const Parts parts(dialog);
    QCOMPARE(parts.factor->count(), 5);
    QCOMPARE(parts.factor->currentIndex(), 4);
    QCOMPARE(parts.factor->currentText(), QStringLiteral("Custom (2)"));
    click(parts.ok);
    QCOMPARE(bench.manager.timeManager().getTimeScaleFactor(), 2.0);
}

void TestTZVciTimeDialog::aFactorWithManyDigitsIsKeptToTheLast()
{
    tztest::DialogWithBoxes bench;
    const double factor = 1e6 / 3;
    bench.manager.timeManager().setTimeScaleFactor(factor);
    TZVciTimeDialog dialog(&bench.manager);
    const Parts parts(dialog);
    parts.factor->setCurrentIndex(0);
    parts.factor->setCurrentIndex(4);
    click(parts.ok);
    QCOMPARE(bench.manager.timeManager().getTimeScaleFactor() - factor, 0.0);
}

void TestTZVciTimeDialog::aFactorCloseToAnItemIsCustom()
{
    constexpr double factor = 1000.0000000001;
    tztest::DialogWithBoxes bench;
    bench.manager.timeManager().setTimeScaleFactor(factor);
    TZVciTimeDialog dialog(&bench.manager);
    const Parts parts(dialog);
    QCOMPARE(parts.factor->currentText(), QStringLiteral("Custom (1000.0000000001)"));
    QCOMPARE(parts.factor->count(), 5);
    click(parts.ok);
    QVERIFY(bench.manager.timeManager().getTimeScaleFactor() == factor);
}

void TestTZVciTimeDialog::resetAsksAndOnNoDoesNothing()
{
    tztest::DialogWithBoxes bench(1);
    QVERIFY2(bench.isReady, bench.error.c_str());
    QCOMPARE(bench.manager.openDevice(0), 0);
    bench.simulator.box(0).clearRequests();
    TZVciTimeDialog dialog(&bench.manager);
    const Parts parts(dialog);
    const QSignalSpy resets(&dialog, &TZVciTimeDialog::sigResetTime);
    tztest::MessageBoxDriver driver;
    driver.expectBox(QMessageBox::No);
    click(parts.reset);
    QVERIFY(driver.allMet());
    QCOMPARE(driver.seen().size(), std::size_t(1));
    QCOMPARE(driver.seen().front().title, QStringLiteral("Reset Global Reference Time"));
    QCOMPARE(driver.seen().front().text,
             QStringLiteral("This will reset the global reference time to the current time.\n"
                            "All relative timestamps will be recalculated from now.\n\n"
                            "Do you want to continue?"));
    QCOMPARE(resets.count(), 0);
    QCOMPARE(baseTimeRequests(bench.simulator.box(0)), 0);
    QVERIFY(dialog.isVisible());
}

void TestTZVciTimeDialog::resetOnYesTellsAndSetsTheReference()
{
    tztest::DialogWithBoxes bench(1);
    QVERIFY2(bench.isReady, bench.error.c_str());
    bench.simulator.box(0).setClockOffset(0);
    QCOMPARE(bench.manager.openDevice(0), 0);
    constexpr std::uint64_t oneHour = 36'000'000'000; // in 0.1 microsecond
    bench.simulator.box(0).setClockOffset(oneHour);
    QVERIFY(bench.manager.globalRelativeSeconds(0, oneHour) > 3000);

    TZVciTimeDialog dialog(&bench.manager);
    const Parts parts(dialog);
    QSignalSpy resets(&dialog, &TZVciTimeDialog::sigResetTime);
    qint64 requestsAtSignal = -1;
    connect(&dialog, &TZVciTimeDialog::sigResetTime, this,
            [&] { requestsAtSignal = baseTimeRequests(bench.simulator.box(0)); });
    bench.simulator.box(0).clearRequests();
    tztest::MessageBoxDriver driver;
    driver.expectBox(QMessageBox::Yes);
    driver.expectBox(QMessageBox::Ok);
    click(parts.reset);
    QVERIFY(driver.allMet());
    QCOMPARE(driver.seen().back().title, QStringLiteral("Time Reset"));
    QCOMPARE(driver.seen().back().text, QStringLiteral("Global reference time has been reset to current time."));
    QCOMPARE(driver.seen().back().icon, int(QMessageBox::Information));
    QCOMPARE(resets.count(), 1);
    QCOMPARE(requestsAtSignal, 0); // the signal comes first
    QCOMPARE(baseTimeRequests(bench.simulator.box(0)), 1);
    QVERIFY(std::abs(bench.manager.globalRelativeSeconds(0, bench.simulator.box(0).deviceTime())) < 60);
    QVERIFY(dialog.isVisible());
}

void TestTZVciTimeDialog::resetReadsTheTimeOfTheOpenDevicesAlone()
{
    tztest::DialogWithBoxes bench(2);
    QVERIFY2(bench.isReady, bench.error.c_str());
    QCOMPARE(bench.manager.openDevice(1), 0);
    const auto datagramsBefore = bench.simulator.box(0).counters().datagramsIn;
    TZVciTimeDialog dialog(&bench.manager);
    const Parts parts(dialog);
    tztest::MessageBoxDriver driver;
    driver.expectBox(QMessageBox::Yes);
    driver.expectBox(QMessageBox::Ok);
    click(parts.reset);
    QVERIFY(driver.allMet());
    QCOMPARE(baseTimeRequests(bench.simulator.box(1)), 2); // at the opening and now
    QCOMPARE(bench.simulator.box(0).counters().datagramsIn, datagramsBefore);
}

void TestTZVciTimeDialog::withoutAManagerOkAndResetSaySo()
{
    TZVciTimeDialog dialog(nullptr);
    const Parts parts(dialog);
    tztest::MessageBoxDriver driver;
    for (QPushButton *button : {parts.ok, parts.reset}) {
        driver.expectBox(QMessageBox::Ok);
        click(button);
        QVERIFY(driver.allMet());
        QCOMPARE(driver.seen().back().title, QStringLiteral("Error"));
        QCOMPARE(driver.seen().back().text, QStringLiteral("Time manager not available"));
    }
    QVERIFY(dialog.isVisible());
    click(parts.cancel);
    QVERIFY(!dialog.isVisible());
}

void TestTZVciTimeDialog::tabOrder()
{
    tztest::DialogWithBoxes bench;
    TZVciTimeDialog dialog(&bench.manager);
    const Parts parts(dialog);
    dialog.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QVERIFY(parts.ok->isDefault());
    QCOMPARE(dialog.focusWidget(), parts.modes.at(2)); // the one that is checked
    for (QWidget *next : {static_cast<QWidget *>(parts.factor), static_cast<QWidget *>(parts.reset),
                          static_cast<QWidget *>(parts.ok), static_cast<QWidget *>(parts.cancel)}) {
        QTest::keyClick(&dialog, Qt::Key_Tab);
        QCOMPARE(dialog.focusWidget(), next);
    }
}
