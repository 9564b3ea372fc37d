// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/TestToolWindows.h"

#include "app/DebugLogDialog.h"
#include "app/TZVciTimeDialog.h"
#include "app/TzVciVersionDialog.h"
#include "logging/blf/BLFParser.h"
#include "logging/ui/BLFConverterDialog.h"
#include "tests/app/AppFixture.h"
#include "tests/logging/blf/BlfTestWriter.h"
#include "tests/support/DocumentOpener.h"
#include "tests/support/MessageBoxDriver.h"
#include "vci/ui/TzVciBusLoadView.h"
#include "views/ui/TzVciBaseViewWindow.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTableView>
#include <QTimer>
#include <QToolButton>
#include <QtTest>

#include <chrono>
#include <memory>
#include <thread>
#include <vector>

void TestToolWindows::busLoadActionShowsOneWindowBesideTheMainWindow()
{
    tztest::AppFixture fixture;
    QVERIFY(!fixture.window->findChild<TzVciBusLoadView *>()); // not before it is asked for
    fixture.action("actionBusLoad_View").trigger();
    fixture.action("actionBusLoad_View").trigger();
    const auto views = fixture.window->findChildren<TzVciBusLoadView *>();
    QCOMPARE(views.size(), 1);
    QVERIFY(views.front()->isVisible() && views.front()->isWindow());
    QVERIFY(!views.front()->isModal());
    QCOMPARE(views.front()->parentWidget(), fixture.window.get());
    QCOMPARE(fixture.area().subWindowList().size(), 0); // it is no traffic view
}

void TestToolWindows::busLoadWindowStaysWhenClosedAndComesBack()
{
    tztest::AppFixture fixture;
    fixture.action("actionBusLoad_View").trigger();
    const QPointer<TzVciBusLoadView> view = fixture.window->findChild<TzVciBusLoadView *>();
    view->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(view && !view->isVisible());
    fixture.action("actionBusLoad_View").trigger();
    QVERIFY(view->isVisible());
    view->showMinimized();
    fixture.action("actionBusLoad_View").trigger();
    QVERIFY(view->isVisible() && !view->isMinimized());
    QCOMPARE(fixture.window->findChildren<TzVciBusLoadView *>().size(), 1);
}

void TestToolWindows::busLoadWindowClosesWithTheProgram()
{
    tztest::AppFixture fixture(1);
    QVERIFY(fixture.openAll(0, TzVciProtocolId::can, 0));
    fixture.action("actionBusLoad_View").trigger();
    const auto *view = fixture.window->findChild<TzVciBusLoadView *>();
    tztest::MessageBoxDriver driver;
    driver.expectBox(QMessageBox::Yes);
    QVERIFY(fixture.window->close());
    QVERIFY(driver.allMet());
    QVERIFY(!view->isVisible());
}

void TestToolWindows::actionsRunModalDialogs_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<QString>("title");
    QTest::newRow("BLF") << "actionBLF_Converter"
                         << "BLF File Converter";
    QTest::newRow("time") << "actionDisplayTime_Settings"
                          << "Device Time Settings";
    QTest::newRow("log") << "actionDebugLog_Settings"
                         << "Debug Log Settings";
    QTest::newRow("version") << "actionDevice_Version"
                             << "TZBench Version Information";
}

void TestToolWindows::actionsRunModalDialogs()
{
    QFETCH(QString, action);
    QFETCH(QString, title);
    tztest::AppFixture fixture;
    tztest::MessageBoxDriver driver;
    QStringList titles;
    bool allModal = true;
    for (int round = 0; round < 2; ++round) {
        driver.expectDialog([&](QDialog *dialog) {
            titles.append(dialog->windowTitle());
            allModal = allModal && dialog->isModal() && dialog->parentWidget() == fixture.window.get();
            dialog->reject();
        });
        fixture.action(qPrintable(action)).trigger();
        QVERIFY(driver.allMet());
    }
    QCOMPARE(titles, (QStringList{title, title}));
    QVERIFY(allModal);
    QVERIFY(fixture.window->findChildren<QDialog *>().isEmpty()); // nothing stays behind
}

void TestToolWindows::timeDialogWorksOnTheDevicesOfTheWindow()
{
    tztest::AppFixture fixture;
    tztest::MessageBoxDriver driver;
    driver.expectDialog([](QDialog *dialog) {
        dialog->findChild<QRadioButton *>(QStringLiteral("radioMode4"))->click();
        dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok)->click();
    });
    fixture.action("actionDisplayTime_Settings").trigger();
    QVERIFY(driver.allMet());
    QCOMPARE(fixture.manager.displayMode(), Common::TimestampDisplayMode::TimeOfDay);
}

// No tick runs in a paused view, so nothing but the dialog makes its texts anew.
void TestToolWindows::timeDialogRefreshesPausedViewsOnOkAndOnReset()
{
    tztest::AppFixture fixture;
    fixture.openViews(1, 1);
    std::vector<std::unique_ptr<QSignalSpy>> changes;
    for (TzVciBaseViewWindow *view : fixture.helper().views().views()) {
        view->onReceivedMessages({TzVciMessage()});
        view->onUpdateData();
        view->findChild<QToolButton *>(QStringLiteral("buttonPause"))->click();
        QVERIFY(view->isPaused());
        auto *model = view->findChild<QTableView *>(QStringLiteral("tableView"))->model();
        QCOMPARE(model->rowCount(), 1);
        changes.push_back(std::make_unique<QSignalSpy>(model, &QAbstractItemModel::dataChanged));
    }
    tztest::MessageBoxDriver driver;
    driver.expectDialog(
        [](QDialog *dialog) { dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok)->click(); });
    fixture.action("actionDisplayTime_Settings").trigger();
    for (const auto &spy : changes)
        QCOMPARE(spy->count(), 1);
    driver.expectDialog([](QDialog *dialog) {
        const auto resetAndLeave = [dialog] {
            dialog->findChild<QPushButton *>(QStringLiteral("buttonReset"))->click();
            dialog->reject();
        };
        QTimer::singleShot(0, dialog, resetAndLeave); // not within the driver, which is to answer the boxes
    });
    driver.expectBox(QMessageBox::Yes);
    driver.expectBox(QMessageBox::Ok);
    fixture.action("actionDisplayTime_Settings").trigger();
    QVERIFY(driver.allMet());
    for (const auto &spy : changes)
        QCOMPARE(spy->count(), 2);
}

void TestToolWindows::versionDialogKnowsTheDevicesOfTheWindow()
{
    tztest::AppFixture fixture(2);
    tztest::MessageBoxDriver driver;
    int devices = 0;
    driver.expectDialog([&](QDialog *dialog) {
        devices = dialog->findChild<QComboBox *>(QStringLiteral("comboDevice"))->count();
        dialog->reject();
    });
    fixture.action("actionDevice_Version").trigger();
    QCOMPARE(devices, 2);
}

void TestToolWindows::aConversionUnderWayKeepsTheProgramOpen()
{
    tztest::AppFixture fixture;
    tztest::BlfTestWriter log;
    for (int i = 0; i < 3000; ++i)
        log.add(tztest::CanMessageBody{});
    QVERIFY(log.save(QStringLiteral("a.blf")));
    tztest::MessageBoxDriver driver;
    bool closed = true;
    driver.expectDialog([&](QDialog *shown) {
        auto *dialog = qobject_cast<BLFConverterDialog *>(shown);
        dialog->findChild<QLineEdit *>(QStringLiteral("lineEditInput"))->setText(QStringLiteral("a.blf"));
        const auto delay = [] { std::this_thread::sleep_for(std::chrono::microseconds(100)); };
        connect(dialog->findChild<BLF::BLFParser *>(), qOverload<const QString &>(&BLF::BLFParser::sigProcessReport),
                dialog, delay);
        // Not within the driver, which is to answer the boxes.
        QTimer::singleShot(0, dialog, [&, dialog] {
            QTimer::singleShot(0, dialog, [&] { closed = fixture.window->close(); });
            dialog->onProcessFile();
            dialog->reject();
        });
    });
    driver.expectBox(QMessageBox::Yes);   // close the program?
    driver.expectBox(QMessageBox::Ok);    // please wait
    driver.expectBox(QMessageBox::Close); // converted
    fixture.action("actionBLF_Converter").trigger();
    QVERIFY(driver.allMet());
    QCOMPARE(driver.seen()[1].text, QStringLiteral("Processing in progress, please wait for completion"));
    QVERIFY(!closed);
    QVERIFY(fixture.window->isVisible());
    QVERIFY(QFileInfo::exists(QStringLiteral("a_processed.csv")));
}

void TestToolWindows::switchTestOpensItsGuide()
{
    tztest::AppFixture fixture;
    QVERIFY(QDir().mkpath(QStringLiteral("doc")));
    QFile guide(QStringLiteral("doc/Switch_CAN.pdf"));
    QVERIFY(guide.open(QIODevice::WriteOnly));
    const tztest::DocumentOpener opener;
    fixture.action("actionSwitch_Test").trigger();
    QCOMPARE(opener.openedFile(), QFileInfo(guide).canonicalFilePath());
    QVERIFY(fixture.window->findChildren<QDialog *>().isEmpty()); // there is no window behind it
}
