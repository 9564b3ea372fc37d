// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/vci/ui/TestConfigDialogActions.h"

#include "tests/support/MessageBoxDriver.h"
#include "tests/vci/ui/ConfigDialogParts.h"

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QMessageBox>
#include <QTimer>
#include <QtTest>

namespace {

/// The settings file; empty where there is none.
QByteArray savedSettings()
{
    QFile file(QStringLiteral("config/vci/vci_config.json"));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

void TestConfigDialogActions::localIpIsStoredTrimmedOnEditingFinished()
{
    QCOMPARE(m_store->addDevice(0, {1, 0}), 0);
    const auto dialog = makeDialog();
    const ConfigDialogParts parts(*dialog);
    QTest::keyClicks(parts.localIp, QStringLiteral("  127.0.0.9 "));
    QCOMPARE(m_store->localIP(0), QString()); // not while typing
    QTest::keyClick(parts.localIp, Qt::Key_Return);
    QCOMPARE(m_store->localIP(0), QStringLiteral("127.0.0.9"));
    QCOMPARE(parts.localIp->text(), QStringLiteral("127.0.0.9"));
}

void TestConfigDialogActions::localIpIsStoredTrimmedBeforeStart()
{
    QCOMPARE(m_store->addDevice(0, {1, 0}), 0);
    tztest::MessageBoxDriver driver;
    driver.expectBox(QMessageBox::Ok); // no box answers
    const auto dialog = makeDialog();
    const ConfigDialogParts parts(*dialog);
    parts.localIp->setText(QStringLiteral(" 127.0.0.9\t"));
    QTest::mouseClick(parts.toggle, Qt::LeftButton);
    QCOMPARE(m_store->localIP(0), QStringLiteral("127.0.0.9"));
}

void TestConfigDialogActions::enterInTheLocalIpStartsNothing()
{
    QCOMPARE(m_store->addDevice(0, {1, 0}), 0);
    const auto dialog = makeDialog();
    const ConfigDialogParts parts(*dialog);
    QTest::keyClick(parts.localIp, Qt::Key_Return);
    QVERIFY(dialog->isVisible());
    QVERIFY(!parts.toggle->isChecked());
    QVERIFY(!m_scanner->isScanning());
}

void TestConfigDialogActions::startWithoutABoxShowsAnErrorAndUnchecks()
{
    QCOMPARE(m_store->addDevice(0, {1, 0}), 0);
    tztest::MessageBoxDriver driver;
    driver.expectBox(QMessageBox::Ok);
    const auto dialog = makeDialog();
    const ConfigDialogParts parts(*dialog);
    QTest::mouseClick(parts.toggle, Qt::LeftButton);
    QVERIFY(driver.allMet());
    QCOMPARE(driver.seen().front().title, QStringLiteral("Open Device Error"));
    QCOMPARE(driver.seen().front().text,
             QStringLiteral("Please check whether the IP corresponding to the index can be pinged successfully."));
    QVERIFY(!parts.toggle->isChecked());
    QCOMPARE(parts.toggle->text(), QStringLiteral("Start"));
}

void TestConfigDialogActions::channelOfAClosedDeviceShowsTheCode()
{
    QCOMPARE(m_store->addDevice(0, {1, 1}), 0);
    tztest::MessageBoxDriver driver;
    driver.expectBox(QMessageBox::Ok);
    driver.expectBox(QMessageBox::Ok);
    const auto dialog = makeDialog();
    const ConfigDialogParts parts(*dialog);
    QTest::mouseClick(parts.can->channelButton(0), Qt::LeftButton);
    QTest::mouseClick(parts.lin->channelButton(0), Qt::LeftButton);
    QVERIFY(driver.allMet());
    QCOMPARE(driver.seen()[0].title, QStringLiteral("Open CAN Error"));
    QCOMPARE(driver.seen()[0].text,
             QStringLiteral("Error code -102, Please check whether the baud rate is set correctly or whether the "
                            "network is connected."));
    QCOMPARE(driver.seen()[1].title, QStringLiteral("Open LIN Error"));
    QVERIFY(!parts.can->channelButton(0)->isChecked());
    QCOMPARE(parts.can->channelButton(0)->toolTip(), QStringLiteral("Open CAN1"));
}

void TestConfigDialogActions::closingSavesTheSettings()
{
    QCOMPARE(m_store->addDevice(0, {1, 0}), 0);
    const auto dialog = makeDialog();
    ConfigDialogParts(*dialog).can->rateCombo(0)->setCurrentText(QStringLiteral("250 kbit/s"));
    QVERIFY(savedSettings().isEmpty());
    dialog->close();
    QVERIFY(!dialog->isVisible());
    QVERIFY(savedSettings().contains("\"250000\""));
}

void TestConfigDialogActions::quittingUnderTheDialogSavesTheSettings()
{
    QCOMPARE(m_store->addDevice(0, {1, 0}), 0);
    auto dialog = makeDialog();
    ConfigDialogParts(*dialog).localIp->setText(QStringLiteral("127.0.0.9")); // being typed
    dialog.reset();
    QVERIFY(savedSettings().contains("\"127.0.0.9\""));
}

void TestConfigDialogActions::quittingUnderTheOpenErrorSavesTheSettings()
{
    QCOMPARE(m_store->addDevice(0, {1, 0}), 0);
    bool boxShown = false;
    QTimer quitter; // tells the program to end as soon as the box shows
    connect(&quitter, &QTimer::timeout, this, [&boxShown] {
        const QWidget *box = QApplication::activeModalWidget();
        if (!box || box->windowTitle() != QStringLiteral("Open Device Error"))
            return;
        boxShown = true;
        QCoreApplication::quit();
    });
    quitter.start(5);
    QTimer::singleShot(0, this, [this] {
        TzVciConfigDialog dialog(m_manager.get(), m_store.get(), m_scanner.get());
        const ConfigDialogParts parts(dialog);
        parts.localIp->setText(QStringLiteral("127.0.0.9"));
        QTimer::singleShot(0, &dialog, [&parts] { parts.toggle->click(); });
        dialog.exec();
    });
    QCoreApplication::exec();
    QVERIFY(boxShown);
    QVERIFY(!QApplication::activeModalWidget());
    QVERIFY(savedSettings().contains("\"127.0.0.9\""));
}

void TestConfigDialogActions::slotsWithoutAClickDoNothing()
{
    QCOMPARE(m_store->addDevice(0, {1, 1}), 0);
    tztest::MessageBoxDriver driver;
    const auto dialog = makeDialog();
    dialog->onCanChannelClicked();
    dialog->onLinChannelClicked();
    dialog->onAdvancedButtonClicked();
    QVERIFY(driver.seen().empty());
    QCOMPARE(driver.unexpected(), 0);
}

void TestConfigDialogActions::enterClicksTheFocusedButton()
{
    QCOMPARE(m_store->addDevice(4, {2, 0}), 0);
    tztest::MessageBoxDriver driver;
    QString title;
    driver.expectDialog([&title](QDialog *shown) {
        title = shown->windowTitle();
        shown->reject();
    });
    driver.expectBox(QMessageBox::Ok); // no box answers
    const auto dialog = makeDialog();
    const ConfigDialogParts parts(*dialog);
    QVERIFY(QTest::qWaitForWindowActive(dialog.get()));
    parts.can->configureButton(1)->setFocus();
    QTest::keyClick(parts.can->configureButton(1), Qt::Key_Enter, Qt::KeypadModifier);
    QCOMPARE(title, QStringLiteral("CAN FD Advanced Configuration - Device 4 CAN2"));
    parts.toggle->setFocus();
    QTest::keyClick(parts.toggle, Qt::Key_Return);
    QVERIFY(driver.allMet());
    QCOMPARE(driver.seen().front().title, QStringLiteral("Open Device Error"));
    QVERIFY(dialog->isVisible());
}

void TestConfigDialogActions::tabScrollsToTheControl()
{
    QCOMPARE(m_store->addDevice(0, {8, 0}), 0);
    const auto dialog = makeDialog();
    const ConfigDialogParts parts(*dialog);
    dialog->resize(dialog->width(), 420); // too low for all rows
    QVERIFY(QTest::qWaitForWindowActive(dialog.get()));
    QPushButton *last = parts.can->channelButton(7);
    const auto isShown = [&] { return parts.can->viewport()->rect().contains(last->parentWidget()->geometry()); };
    QVERIFY(!isShown());
    parts.can->configureButton(6)->setFocus(Qt::OtherFocusReason);
    QTest::keyClick(parts.can->configureButton(6), Qt::Key_Tab);
    QCOMPARE(dialog->focusWidget(), static_cast<QWidget *>(last));
    QVERIFY(isShown());
}
