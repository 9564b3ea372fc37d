// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/TestTZBenchWindow.h"

#include "app/TzQuickButtonState.h"
#include "tests/app/AppFixture.h"
#include "tests/support/MessageBoxDriver.h"

#include <QDialog>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QTabWidget>
#include <QToolButton>
#include <QtTest>

namespace {

using Box = QMessageBox;

QToolButton &button(tztest::AppFixture &fixture, const char *name)
{
    return *fixture.window->findChild<QToolButton *>(QString::fromLatin1(name));
}

QStringList texts(const QList<QAction *> &actions)
{
    QStringList result;
    for (const QAction *action : actions)
        result.append(action->text());
    return result;
}

} // namespace

void TestTZBenchWindow::titleAndPages()
{
    tztest::AppFixture fixture;
    QCOMPARE(fixture.window->windowTitle(), QStringLiteral("   Zarvelo Bench"));
    const auto *tabs = fixture.window->findChild<QTabWidget *>(QStringLiteral("tabWidget"));
    QVERIFY(tabs);
    const QStringList names{"tabVCI", "tabETH", "tabPSI5", "tabSENT", "tabMore"};
    const QStringList titles{"VCI", "ETH", "PSI5", "SENT", "More"};
    QCOMPARE(tabs->count(), 5);
    for (int i = 0; i < tabs->count(); ++i) {
        QCOMPARE(tabs->tabText(i), titles.at(i));
        QCOMPARE(tabs->widget(i)->objectName(), names.at(i));
        QCOMPARE(tabs->widget(i)->findChildren<QWidget *>().isEmpty(), i > 0); // only the first has content
    }
    QCOMPARE(tabs->currentIndex(), 0);
    QVERIFY(fixture.area().testOption(QMdiArea::DontMaximizeSubWindowOnActivation));
}

void TestTZBenchWindow::menusHoldTheirActionsInOrder_data()
{
    QTest::addColumn<QString>("menu");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QStringList>("actions");
    QTest::newRow("device") << "menuVCI_Device"
                            << "VCI Device" << QStringList{};
    QTest::newRow("view") << "menuVCI_View"
                          << "VCI View" << QStringList{"New CAN View", "New DBC View", "New LIN View", "New LDF View",
                                                       "BusLoad View", "Reset View",   "Close View"};
    QTest::newRow("send") << "menuVCI_Send"
                          << "VCI Send" << QStringList{"CAN Send", "DBC Send", "LIN Send", "LDF Send", "ASC Send"};
    QTest::newRow("analysis") << "menuVCI_Analysis"
                              << "VCI Analysis" << QStringList{"CAN Signal", "LIN Signal"};
    QTest::newRow("diagnose") << "menuVCI_Diagnose"
                              << "VCI Diagnose" << QStringList{"UDSonCAN", "OBD Diagnose"};
    QTest::newRow("test") << "menuVCI_Test"
                          << "VCI Test" << QStringList{"DCU Test"};
    QTest::newRow("tools") << "menuVCI_Tools"
                           << "VCI Tools"
                           << QStringList{"BLF Converter", "Switch Test", "CAN Collector", "PSI5 Config (CAN)"};
    QTest::newRow("settings") << "menuVCI_Settings"
                              << "VCI Settings"
                              << QStringList{"Device Settings", "Display Time Settings", "Debug Log Settings",
                                             "Device Version"};
}

void TestTZBenchWindow::menusHoldTheirActionsInOrder()
{
    QFETCH(QString, menu);
    QFETCH(QString, title);
    QFETCH(QStringList, actions);
    tztest::AppFixture fixture;
    const auto *found = fixture.window->findChild<QMenu *>(menu);
    QVERIFY(found);
    QCOMPARE(found->title(), title);
    QCOMPARE(texts(found->actions()), actions);
}

void TestTZBenchWindow::menuBarHasOneMenuWithEightMenus()
{
    tztest::AppFixture fixture;
    QCOMPARE(texts(fixture.window->menuBar()->actions()), QStringList{"VCI"});
    const auto *menu = fixture.window->findChild<QMenu *>(QStringLiteral("menuVCI"));
    QCOMPARE(texts(menu->actions()), (QStringList{"VCI Device", "VCI View", "VCI Send", "VCI Analysis", "VCI Diagnose",
                                                  "VCI Test", "VCI Tools", "VCI Settings"}));
}

void TestTZBenchWindow::actionToolTips_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<QString>("toolTip");
    QTest::newRow("uds") << "actionUDSonCAN"
                         << "CAN protocol UDS diagnosis";
    QTest::newRow("can signal") << "actionCAN_Signal"
                                << "Support DBC signal analysis";
    QTest::newRow("lin signal") << "actionLIN_Signal"
                                << "Support  LDF signal analysis";
    QTest::newRow("bus load") << "actionBusLoad_View"
                              << "View device channel load rate";
    QTest::newRow("dcu") << "actionDCU_Test"
                         << "Door Control Unit Test";
    QTest::newRow("as the text") << "actionReset_View"
                                 << "Reset View";
}

void TestTZBenchWindow::actionToolTips()
{
    QFETCH(QString, action);
    QFETCH(QString, toolTip);
    tztest::AppFixture fixture;
    QCOMPARE(fixture.action(qPrintable(action)).toolTip(), toolTip);
}

void TestTZBenchWindow::actionsWithoutAWindowAreDisabled()
{
    tztest::AppFixture fixture;
    QStringList enabled;
    const auto actions = fixture.window->findChildren<QAction *>(QRegularExpression(QStringLiteral("^action")));
    for (const QAction *action : actions) {
        if (action->isEnabled())
            enabled.append(action->text());
    }
    QCOMPARE(actions.size(), 25);
    QCOMPARE(enabled, (QStringList{"New CAN View", "New LIN View", "BusLoad View", "Reset View", "Close View",
                                   "BLF Converter", "Switch Test", "Device Settings", "Display Time Settings",
                                   "Debug Log Settings", "Device Version"}));
    QVERIFY(!fixture.action("actionASC_Send").isEnabled());
    QVERIFY(!fixture.action("actionOBD_Diagnose").isEnabled());
}

void TestTZBenchWindow::toolRow_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("menu");
    QTest::newRow("device") << "toolVCIDevice"
                            << " Open"
                            << "";
    QTest::newRow("view") << "toolVCIView"
                          << " View"
                          << "menuVCI_View";
    QTest::newRow("send") << "toolVCISend"
                          << " Send"
                          << "menuVCI_Send";
    QTest::newRow("diagnose") << "toolVCIDiagnose"
                              << "Diagnose"
                              << "menuVCI_Diagnose";
    QTest::newRow("analysis") << "toolVCIAnalysis"
                              << "Analysis"
                              << "menuVCI_Analysis";
    QTest::newRow("tester") << "toolVCITester"
                            << "Tester"
                            << "menuVCI_Test";
    QTest::newRow("tools") << "toolVCITools"
                           << "Tools"
                           << "menuVCI_Tools";
    QTest::newRow("settings") << "toolVCISettings"
                              << "Settings"
                              << "menuVCI_Settings";
}

void TestTZBenchWindow::toolRow()
{
    QFETCH(QString, name);
    QFETCH(QString, text);
    QFETCH(QString, menu);
    tztest::AppFixture fixture;
    const QToolButton &tool = button(fixture, qPrintable(name));
    QCOMPARE(tool.text(), text);
    QCOMPARE(tool.menu() ? tool.menu()->objectName() : QString(), menu);
    QCOMPARE(tool.height(), button(fixture, "toolVCIDevice").height());
    QVERIFY(tool.geometry().bottom() < fixture.area().geometry().top());
    if (name == QLatin1String("toolVCIDevice"))
        QCOMPARE(tool.toolTip(), QStringLiteral("Quickly open TZVCI device"));
}

void TestTZBenchWindow::everyIconExists()
{
    tztest::AppFixture fixture;
    const auto actions = fixture.window->findChildren<QAction *>(QRegularExpression(QStringLiteral("^action")));
    for (const QAction *action : actions)
        QVERIFY2(!action->icon().pixmap(16).isNull(), qPrintable(action->objectName()));
    const auto tools = fixture.window->findChildren<QToolButton *>(QRegularExpression(QStringLiteral("^toolVCI")));
    QCOMPARE(tools.size(), 8);
    for (const QToolButton *tool : tools)
        QVERIFY2(!tool->icon().pixmap(32).isNull(), qPrintable(tool->objectName()));
}

void TestTZBenchWindow::quickButtonStates()
{
    QToolButton tool;
    TzQuickButtonState::forChannels(true).applyTo(tool);
    QVERIFY(tool.isCheckable());
    QCOMPARE(tool.text(), QStringLiteral("Close"));
    QCOMPARE(tool.toolTip(), QStringLiteral("Quickly close TZVCI device"));
    QCOMPARE(TzQuickButtonState::forChannels(true).iconPath, QStringLiteral(":/resource/vci/vci_close.png"));
    TzQuickButtonState::forChannels(false).applyTo(tool);
    QVERIFY(!tool.isCheckable() && !tool.isChecked());
    QCOMPARE(tool.text(), QStringLiteral(" Open "));
    QCOMPARE(tool.toolTip(), QStringLiteral("Quickly open TZVCI device"));
    QCOMPARE(TzQuickButtonState::forChannels(false).iconPath, QStringLiteral(":/resource/vci/vci_open.png"));
}

void TestTZBenchWindow::quickButtonWithNoOpenChannelOpensTheSettingsDialog()
{
    tztest::AppFixture fixture;
    tztest::MessageBoxDriver driver;
    QString title;
    driver.expectDialog([&](QDialog *dialog) {
        title = dialog->windowTitle();
        dialog->reject();
    });
    button(fixture, "toolVCIDevice").click();
    QVERIFY(driver.allMet());
    QCOMPARE(title, QStringLiteral("Device Settings"));
}

void TestTZBenchWindow::quickButtonWithAnOpenChannelAndNoChangesNothing()
{
    tztest::AppFixture fixture(1);
    QVERIFY(fixture.openAll(0, TzVciProtocolId::can, 0));
    QToolButton &tool = button(fixture, "toolVCIDevice");
    QVERIFY(tool.isCheckable());
    tztest::MessageBoxDriver driver;
    driver.expectBox(Box::No);
    tool.click();
    QVERIFY(driver.allMet());
    QCOMPARE(driver.seen().front().title, QStringLiteral("Warnning"));
    QCOMPARE(driver.seen().front().text,
             QStringLiteral("Are you sure to close all devices and corresponding channels?"));
    QVERIFY(fixture.store.isChannelOpen(0, TzVciProtocolId::can, 0));
    QVERIFY(fixture.simulator.box(0).canChannel(0).open);
    QVERIFY(tool.isCheckable() && tool.isChecked());
    QCOMPARE(tool.text(), QStringLiteral("Close"));
}

void TestTZBenchWindow::quickButtonWithAnOpenChannelAndYesClosesAllDevices()
{
    tztest::AppFixture fixture(2);
    QVERIFY(fixture.openAll(0, TzVciProtocolId::can, 0));
    QVERIFY(fixture.openAll(1, TzVciProtocolId::lin, 0));
    QToolButton &tool = button(fixture, "toolVCIDevice");
    tztest::MessageBoxDriver driver;
    driver.expectBox(Box::Yes);
    tool.click();
    QVERIFY(!fixture.store.anyChannelOpen(-1));
    QVERIFY(!fixture.store.isDeviceOpen(-1));
    QCOMPARE(fixture.simulator.box(0).openChannels() + fixture.simulator.box(1).openChannels(), 0);
    QVERIFY(tztest::waitFor([&] { return !tool.isCheckable(); }));
    QCOMPARE(tool.text(), QStringLiteral(" Open "));
    QVERIFY(tztest::waitFor([&] {
        return !fixture.helper().isDraining(TzVciProtocolId::can) && !fixture.helper().isDraining(TzVciProtocolId::lin);
    }));
}

void TestTZBenchWindow::settingsButtonAndActionOpenTheSettingsDialog()
{
    tztest::AppFixture fixture;
    tztest::MessageBoxDriver driver;
    QStringList titles;
    const auto note = [&](QDialog *dialog) {
        titles.append(dialog->windowTitle());
        dialog->reject();
    };
    driver.expectDialog(note);
    button(fixture, "toolVCISettings").click();
    driver.expectDialog(note);
    fixture.action("actionDevice_Settings").trigger();
    QCOMPARE(titles, (QStringList{"Device Settings", "Device Settings"}));
    QCOMPARE(driver.unexpected(), 0);
}

void TestTZBenchWindow::viewButtonAndActionsOpenViews()
{
    tztest::AppFixture fixture;
    button(fixture, "toolVCIView").click();
    fixture.action("actionNew_CAN_View").trigger();
    fixture.action("actionNew_LIN_View").trigger();
    QCOMPARE(fixture.titles(), (std::vector<QString>{"View1 For CAN", "View2 For CAN", "View3 For LIN"}));
}
