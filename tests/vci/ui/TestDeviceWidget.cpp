// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/vci/ui/TestDeviceWidget.h"

#include "common/ui/WorkbenchStyle.h"
#include "tests/support/IconCompare.h"
#include "tests/support/MessageBoxDriver.h"
#include "tests/support/WaitFor.h"
#include "tools/simulator/Simulator.h"
#include "vci/TzVciTypes.h"
#include "vci/ui/TzVciDeviceToolTip.h"
#include "vci/ui/TzVciDeviceWidget.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QListWidget>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTimer>
#include <QtTest>

#include <thread>

namespace {

QPushButton *scanButton(const QWidget &widget)
{
    return widget.findChild<QPushButton *>(QStringLiteral("buttonScan"));
}

QPushButton *addButton(const QWidget &widget)
{
    return widget.findChild<QPushButton *>(QStringLiteral("buttonAddDevice"));
}

QListWidget *list(const QWidget &widget)
{
    return widget.findChild<QListWidget *>();
}

QSpinBox *spin(const QWidget *dialog, const char *name)
{
    return dialog->findChild<QSpinBox *>(QString::fromLatin1(name));
}

/// Counts the message boxes that are shown, however shortly.
class BoxCounter : public QObject
{
public:
    BoxCounter() { qApp->installEventFilter(this); }
    int count() const { return m_count; }
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        m_count += event->type() == QEvent::Show && qobject_cast<QMessageBox *>(watched) ? 1 : 0;
        return false;
    }

private:
    int m_count = 0;
};

} // namespace

void TestDeviceWidget::initTestCase()
{
    Common::applyWorkbenchStyle(*qApp);
}

void TestDeviceWidget::init()
{
    m_store = std::make_unique<TzVciDeviceStore>();
    m_scanner = std::make_unique<TzVciDeviceScanner>(m_store.get());
}

void TestDeviceWidget::cleanup()
{
    m_scanner.reset();
    m_store.reset();
}

void TestDeviceWidget::showsTitleButtonsAndToolTips()
{
    const TzVciDeviceWidget widget(m_store.get(), m_scanner.get());
    QCOMPARE(widget.title(), QStringLiteral("Device List"));
    QCOMPARE(scanButton(widget)->text(), QStringLiteral("Scan"));
    QCOMPARE(scanButton(widget)->toolTip(), QStringLiteral("Scan for devices (timeout 2 seconds)"));
    QVERIFY(showsIcon(scanButton(widget)->icon(), ":/resource/search.png"));
    QCOMPARE(addButton(widget)->toolTip(), QStringLiteral("Add device manually"));
    QVERIFY(showsIcon(addButton(widget)->icon(), ":/resource/add.png"));
}

void TestDeviceWidget::listsDevicesWithLampAndToolTip()
{
    QCOMPARE(m_store->addDevice(4, {2, 1}), 0);
    m_store->setDeviceOpen(4, true);
    m_store->setChannelOpen(4, TzVciProtocolId::can, 1, true);
    QCOMPARE(m_store->addDevice(1, {0, 0}), 0);
    TzVciDeviceWidget widget(m_store.get(), m_scanner.get());
    widget.refreshDevices();
    QCOMPARE(list(widget)->count(), 2);
    const QListWidgetItem *closed = list(widget)->item(0);
    const QListWidgetItem *opened = list(widget)->item(1);
    QCOMPARE(closed->text(), QStringLiteral("Device 1"));
    QCOMPARE(opened->text(), QStringLiteral("Device 4"));
    QCOMPARE(opened->data(Qt::UserRole).toInt(), 4);
    QVERIFY(opened->icon().pixmap(16).toImage() != closed->icon().pixmap(16).toImage());

    const QString openedTip = opened->toolTip();
    QVERIFY(openedTip.contains(QStringLiteral("<table")));
    QVERIFY(openedTip.contains(QStringLiteral("Device ") + m_store->deviceIp(4)));
    QVERIFY(openedTip.contains(QStringLiteral("<span class=\"opened\">Opened</span>")));
    QVERIFY(openedTip.contains(QStringLiteral("<span class=\"closed\">CAN1</span>")));
    QVERIFY(openedTip.contains(QStringLiteral("<span class=\"opened\">CAN2</span>")));
    QVERIFY(openedTip.contains(QStringLiteral("<span class=\"closed\">LIN1</span>")));
    QVERIFY(closed->toolTip().contains(QStringLiteral("<span class=\"closed\">Closed</span>")));
    for (const char *part : {"Status:", "CAN:", "LIN:"})
        QVERIFY2(closed->toolTip().contains(QString::fromLatin1(part)), part);
}

void TestDeviceWidget::followsTheStoreWhenAnotherThreadAddsADevice()
{
    const TzVciDeviceWidget widget(m_store.get(), m_scanner.get());
    QSignalSpy selected(&widget, &TzVciDeviceWidget::deviceSelected);
    std::thread([this] { m_store->addDevice(5, {1, 1}); }).join();
    QVERIFY(tztest::waitFor([&] { return list(widget)->count() == 1; }));
    QCOMPARE(widget.selectedDevice(), 5); // none was selected
    QCOMPARE(selected.count(), 1);
    QCOMPARE(selected.first().first().toInt(), 5);
}

void TestDeviceWidget::keepsTheSelectionWhenADeviceIsAdded()
{
    QCOMPARE(m_store->addDevice(5, {1, 1}), 0);
    TzVciDeviceWidget widget(m_store.get(), m_scanner.get());
    widget.refreshDevices();
    QSignalSpy selected(&widget, &TzVciDeviceWidget::deviceSelected);
    QCOMPARE(m_store->addDevice(2, {1, 1}), 0);
    QCOMPARE(list(widget)->count(), 2);
    QCOMPARE(widget.selectedDevice(), 5);
    QCOMPARE(selected.count(), 0);
}

void TestDeviceWidget::reportsTheSelectedDevice()
{
    for (const int index : {0, 7})
        QCOMPARE(m_store->addDevice(index, {1, 1}), 0);
    m_store->setCurrentDevice(7);
    TzVciDeviceWidget widget(m_store.get(), m_scanner.get());
    widget.refreshDevices();
    QCOMPARE(widget.selectedDevice(), 7); // the store's current device
    QSignalSpy selected(&widget, &TzVciDeviceWidget::deviceSelected);
    widget.show();
    QTest::keyClick(list(widget), Qt::Key_Up);
    QCOMPARE(selected.count(), 1);
    QCOMPARE(selected.first().first().toInt(), 0);
}

void TestDeviceWidget::scanSelectsTheFoundDevice()
{
    tzsim::Simulator simulator;
    simulator.addBox({.index = 3, .canChannels = 4, .linChannels = 2});
    std::string error;
    QVERIFY2(simulator.start(&error), error.c_str());

    tztest::MessageBoxDriver driver;
    TzVciDeviceWidget widget(m_store.get(), m_scanner.get());
    widget.show();
    QTest::mouseClick(scanButton(widget), Qt::LeftButton);
    QCOMPARE(driver.unexpected(), 0);
    QVERIFY(driver.seen().empty());
    QCOMPARE(list(widget)->count(), 1);
    QCOMPARE(widget.selectedDevice(), 3);
    QCOMPARE(m_store->canChannelCount(3), 4);
    QCOMPARE(m_store->linChannelCount(3), 2);
}

void TestDeviceWidget::scanWithoutResultSaysSoAndKeepsPainting()
{
    tztest::MessageBoxDriver driver;
    driver.expectBox(QMessageBox::Ok);
    TzVciDeviceWidget widget(m_store.get(), m_scanner.get());
    widget.show();
    int ticks = 0;
    bool wasLocked = true;
    QTimer timer;
    connect(&timer, &QTimer::timeout, &widget, [&] {
        if (!m_scanner->isScanning())
            return;
        ++ticks;
        const QCursor *cursor = QApplication::overrideCursor();
        wasLocked &= !scanButton(widget)->isEnabled() && !addButton(widget)->isEnabled();
        wasLocked &= cursor && cursor->shape() == Qt::WaitCursor;
        QTest::mouseClick(list(widget), Qt::LeftButton); // dropped, as is the closing by the user
        QTest::keyClick(&widget, Qt::Key_Escape);
    });
    timer.start(20);
    QTest::mouseClick(scanButton(widget), Qt::LeftButton);
    timer.stop();
    QVERIFY2(ticks > 10, "the event loop ran during the scan");
    QVERIFY(wasLocked);
    QVERIFY(driver.allMet());
    QCOMPARE(driver.seen().front().title, QStringLiteral("Scan Result"));
    QCOMPARE(driver.seen().front().text, QStringLiteral("No new devices were found."));
    QVERIFY(scanButton(widget)->isEnabled());
    QVERIFY(addButton(widget)->isEnabled());
    QVERIFY(!QApplication::overrideCursor());
}

void TestDeviceWidget::scanGivesTheFocusBack()
{
    tztest::MessageBoxDriver driver;
    driver.expectBox(QMessageBox::Ok);
    TzVciDeviceWidget widget(m_store.get(), m_scanner.get());
    widget.show();
    QVERIFY(QTest::qWaitForWindowActive(&widget));
    scanButton(widget)->setFocus();
    QTimer::singleShot(100, m_scanner.get(), [this] { m_scanner->cancel(); });
    QTest::keyClick(scanButton(widget), Qt::Key_Space);
    QVERIFY(driver.allMet());
    QCOMPARE(widget.focusWidget(), static_cast<QWidget *>(scanButton(widget)));
}

void TestDeviceWidget::tabGoesFromScanOverAddToTheList()
{
    TzVciDeviceWidget widget(m_store.get(), m_scanner.get());
    widget.show();
    QVERIFY(QTest::qWaitForWindowActive(&widget));
    QCOMPARE(widget.focusWidget(), static_cast<QWidget *>(list(widget))); // at first
    QWidget *const expected[] = {scanButton(widget), addButton(widget), list(widget)};
    for (QWidget *next : expected) {
        QTest::keyClick(widget.focusWidget(), Qt::Key_Tab);
        QCOMPARE(widget.focusWidget(), next);
    }
}

void TestDeviceWidget::scanOutlivesTheWidget()
{
    tztest::MessageBoxDriver driver;
    QPointer<TzVciDeviceWidget> widget = new TzVciDeviceWidget(m_store.get(), m_scanner.get());
    widget->show();
    QTimer::singleShot(50, this, [&] {
        delete widget;
        m_scanner->cancel();
    });
    widget->onScanDeviceClicked();
    QVERIFY(!widget);
    QVERIFY(!m_scanner->isScanning());
    QVERIFY(!QApplication::overrideCursor());
    QVERIFY(driver.seen().empty());
}

void TestDeviceWidget::scanEndsWhenTheProgramQuits()
{
    TzVciDeviceWidget widget(m_store.get(), m_scanner.get());
    widget.show();
    QElapsedTimer elapsed;
    // The program's own event loop, which a quit ends together with the loop of the scan.
    QTimer::singleShot(0, &widget, [&] {
        elapsed.start();
        QTimer::singleShot(100, &widget, [] { QCoreApplication::quit(); });
        widget.onScanDeviceClicked();
    });
    const BoxCounter boxes;
    QCoreApplication::exec();
    QVERIFY(elapsed.elapsed() < tzVciScanTimeoutMs);
    QVERIFY(!m_scanner->isScanning());
    QCOMPARE(boxes.count(), 0);
}

// The loop of the scan ends at once, mostly before the scan's thread has run.
void TestDeviceWidget::scanEndsWhenTheProgramHasQuitBefore()
{
    const BoxCounter boxes;
    for (int round = 0; round < 10; ++round) {
        TzVciDeviceWidget widget(m_store.get(), m_scanner.get());
        widget.show();
        QElapsedTimer elapsed;
        QTimer::singleShot(0, &widget, [&] {
            elapsed.start();
            QCoreApplication::quit();
            widget.onScanDeviceClicked();
        });
        QCoreApplication::exec();
        QVERIFY(elapsed.elapsed() < tzVciScanTimeoutMs);
        QVERIFY(!m_scanner->isScanning());
    }
    QCOMPARE(boxes.count(), 0);
}

void TestDeviceWidget::addPresetsTheLowestFreeIndexAndEightChannels()
{
    for (const int index : {0, 1, 3})
        QCOMPARE(m_store->addDevice(index, {1, 1}), 0);
    tztest::MessageBoxDriver driver;
    QString title;
    int values[3] = {};
    int maxima[3] = {};
    driver.expectDialog([&](QDialog *dialog) {
        title = dialog->windowTitle();
        int i = 0;
        for (const char *name : {"spinDeviceIndex", "spinCanChannels", "spinLinChannels"}) {
            values[i] = spin(dialog, name)->value();
            maxima[i++] = spin(dialog, name)->maximum();
        }
        dialog->reject();
    });
    TzVciDeviceWidget widget(m_store.get(), m_scanner.get());
    widget.onAddDeviceClicked();
    QCOMPARE(title, QStringLiteral("Add Virtual Device"));
    QCOMPARE(values[0], 2);
    QCOMPARE(values[1], 8);
    QCOMPARE(values[2], 8);
    QCOMPARE(maxima[0], 15);
    QCOMPARE(maxima[1], 8);
    QCOMPARE(maxima[2], 8);
}

void TestDeviceWidget::addMakesADevice()
{
    tztest::MessageBoxDriver driver;
    driver.expectDialog([](QDialog *dialog) {
        spin(dialog, "spinDeviceIndex")->setValue(15);
        spin(dialog, "spinCanChannels")->setValue(0);
        spin(dialog, "spinLinChannels")->setValue(3);
        dialog->accept();
    });
    driver.expectBox(QMessageBox::Ok);
    TzVciDeviceWidget widget(m_store.get(), m_scanner.get());
    widget.show();
    QTest::mouseClick(addButton(widget), Qt::LeftButton);
    QVERIFY(driver.allMet());
    QCOMPARE(driver.seen().front().title, QStringLiteral("Success"));
    QCOMPARE(driver.seen().front().text, QStringLiteral("Virtual device 15 added."));
    QCOMPARE(widget.selectedDevice(), 15);
    QCOMPARE(m_store->canChannelCount(15), 0);
    QCOMPARE(m_store->linChannelCount(15), 3);
    QCOMPARE(m_store->linChannelConfig(15, 0)->type.value(), QStringLiteral("Master"));
    QCOMPARE(m_store->linChannelConfig(15, 2)->type.value(), QStringLiteral("Slave"));
}

void TestDeviceWidget::addRefusesAnIndexThatExists()
{
    QCOMPARE(m_store->addDevice(6, {1, 1}), 0);
    tztest::MessageBoxDriver driver;
    driver.expectDialog([](QDialog *dialog) {
        spin(dialog, "spinDeviceIndex")->setValue(6);
        dialog->accept();
    });
    driver.expectBox(QMessageBox::Ok);
    TzVciDeviceWidget widget(m_store.get(), m_scanner.get());
    widget.onAddDeviceClicked();
    QVERIFY(driver.allMet());
    QCOMPARE(driver.seen().front().title, QStringLiteral("Add Failed"));
    QCOMPARE(driver.seen().front().text, QStringLiteral("Device with index 6 already exists."));
    QCOMPARE(m_store->canChannelCount(6), 1);
}

void TestDeviceWidget::addCancelledAddsNothing()
{
    tztest::MessageBoxDriver driver;
    driver.expectDialog([](QDialog *dialog) { QTest::keyClick(dialog, Qt::Key_Escape); });
    TzVciDeviceWidget widget(m_store.get(), m_scanner.get());
    widget.onAddDeviceClicked();
    QVERIFY(driver.allMet());
    QVERIFY(driver.seen().empty());
    QVERIFY(m_store->deviceIndices().empty());
}
