// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/vci/ui/TestConfigDialog.h"

#include "common/ui/WorkbenchStyle.h"
#include "tests/support/MessageBoxDriver.h"
#include "tests/support/WaitFor.h"
#include "tests/vci/ui/ConfigDialogParts.h"
#include "tests/vci/ui/IconCompare.h"
#include "vci/TzVciTypes.h"

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QGroupBox>
#include <QLabel>
#include <QMessageBox>
#include <QScreen>
#include <QTimer>
#include <QWheelEvent>
#include <QtTest>

namespace {

QStringList headersOf(const QTableWidget &table)
{
    QStringList headers;
    for (int column = 0; column < table.columnCount(); ++column)
        headers << table.horizontalHeaderItem(column)->text();
    return headers;
}

QStringList itemsOf(const QComboBox &combo)
{
    QStringList items;
    for (int i = 0; i < combo.count(); ++i)
        items << combo.itemText(i);
    return items;
}

} // namespace

void TestConfigDialog::initTestCase()
{
    Common::applyWorkbenchStyle(*qApp);
}

void TestConfigDialog::init()
{
    m_workDir = std::make_unique<tztest::TempWorkDir>();
    m_store = std::make_unique<TzVciDeviceStore>();
    m_scanner = std::make_unique<TzVciDeviceScanner>(m_store.get());
    m_manager = std::make_unique<TzVciDeviceManager>(m_store.get());
}

void TestConfigDialog::cleanup()
{
    m_manager.reset();
    m_scanner.reset();
    m_store.reset();
    m_workDir.reset();
}

std::unique_ptr<TzVciConfigDialog> TestConfigDialog::makeDialog()
{
    auto dialog = std::make_unique<TzVciConfigDialog>(m_manager.get(), m_store.get(), m_scanner.get());
    dialog->show();
    return dialog;
}

void TestConfigDialog::showsTitleTextsAndToolTips()
{
    const auto dialog = makeDialog();
    const ConfigDialogParts parts(*dialog);
    QCOMPARE(dialog->windowTitle(), QStringLiteral("Device Settings"));
    QVERIFY(showsIcon(dialog->windowIcon(), ":/resource/vci/vci_open.png"));
    QStringList titles;
    for (const auto *group : dialog->findChildren<QGroupBox *>())
        titles << group->title();
    for (const char *title : {"Device List", "Device Control", "CAN Channel", "LIN Channel"})
        QVERIFY2(titles.contains(QString::fromLatin1(title)), title);
    QCOMPARE(parts.localIp->placeholderText(), QStringLiteral("192.168.201.199"));
    QCOMPARE(parts.localIp->toolTip(),
             QStringLiteral("When multiple device index numbers (IPs) are the same, you need to enter the IP of the "
                            "local network card connected to the operating device."));
    const auto labels = dialog->findChildren<QLabel *>();
    QVERIFY(std::any_of(labels.begin(), labels.end(),
                        [](const QLabel *label) { return label->text() == QStringLiteral("Local IP:"); }));
    QCOMPARE(parts.toggle->text(), QStringLiteral("Start"));
    QVERIFY(showsIcon(parts.toggle->icon(), ":/resource/channel_start.png"));
    QVERIFY(parts.toggle->isCheckable());
}

void TestConfigDialog::tablesHaveTheirColumns()
{
    const auto dialog = makeDialog();
    const ConfigDialogParts parts(*dialog);
    QCOMPARE(headersOf(*parts.can), QStringLiteral("CH,Type,Baud,FD,Cfg").split(QLatin1Char(',')));
    QCOMPARE(headersOf(*parts.lin), QStringLiteral("CH,Type,Baud,LDF").split(QLatin1Char(',')));
}

void TestConfigDialog::controlsAreDisabledWithoutADevice()
{
    const auto dialog = makeDialog();
    const ConfigDialogParts parts(*dialog);
    QVERIFY(!parts.toggle->isEnabled());
    QVERIFY(!parts.localIp->isEnabled());
    QVERIFY(!parts.can->isEnabled());
    QVERIFY(!parts.lin->isEnabled());
    QCOMPARE(parts.can->rowCount(), 0);
    dialog->onToggleDeviceClicked(); // does nothing
    QVERIFY(!parts.toggle->isChecked());
}

void TestConfigDialog::selectingADeviceShowsItsSettings()
{
    QCOMPARE(m_store->addDevice(0, {1, 1}), 0);
    QCOMPARE(m_store->addDevice(9, {3, 2}), 0);
    m_store->setLocalIP(9, QStringLiteral("127.0.0.1"));
    m_store->setDeviceOpen(9, true);
    m_store->setChannelOpen(9, TzVciProtocolId::lin, 1, true);
    const auto dialog = makeDialog();
    const ConfigDialogParts parts(*dialog);
    QCOMPARE(parts.can->rowCount(), 1);
    QCOMPARE(parts.toggle->text(), QStringLiteral("Start"));
    QVERIFY(parts.toggle->isEnabled());

    parts.devices->setCurrentRow(1);
    QCOMPARE(m_store->currentDeviceIndex(), 9);
    QCOMPARE(parts.localIp->text(), QStringLiteral("127.0.0.1"));
    QCOMPARE(parts.can->rowCount(), 3);
    QCOMPARE(parts.lin->rowCount(), 2);
    QCOMPARE(parts.toggle->text(), QStringLiteral("Stop"));
    QVERIFY(showsIcon(parts.toggle->icon(), ":/resource/channel_stop.png"));
    QVERIFY(parts.toggle->isChecked());
    QCOMPARE(parts.lin->channelButton(0)->text(), QStringLiteral("LIN1"));
    QCOMPARE(parts.lin->channelButton(0)->toolTip(), QStringLiteral("Open LIN1"));
    QCOMPARE(parts.lin->channelButton(1)->toolTip(), QStringLiteral("Close LIN2"));
    QVERIFY(showsIcon(parts.lin->channelButton(0)->icon(), ":/resource/open_window.png"));
    QVERIFY(showsIcon(parts.lin->channelButton(1)->icon(), ":/resource/close_window.png"));
    QVERIFY(showsIcon(parts.devices->item(0)->icon(), ":/resource/light_off.png"));
    QVERIFY(showsIcon(parts.devices->item(1)->icon(), ":/resource/light_on.png"));
}

void TestConfigDialog::rowsOfferTypesAndRates()
{
    QCOMPARE(m_store->addDevice(0, {1, 2}), 0);
    const auto dialog = makeDialog();
    const ConfigDialogParts parts(*dialog);
    QCOMPARE(itemsOf(*parts.can->typeCombo(0)), (QStringList{"CAN", "CANFD", "CANFDBRS"}));
    QCOMPARE(parts.can->typeCombo(0)->currentText(), QStringLiteral("CANFD"));
    QCOMPARE(parts.can->rateCombo(0)->count(), 15);
    QCOMPARE(parts.can->rateCombo(0)->currentText(), QStringLiteral("500 kbit/s"));
    QCOMPARE(parts.can->dataRateCombo(0)->count(), 13);
    QCOMPARE(parts.can->dataRateCombo(0)->currentText(), QStringLiteral("2 Mbit/s"));
    QCOMPARE(parts.can->configureButton(0)->text(), QStringLiteral("Configure"));
    QCOMPARE(parts.can->configureButton(0)->property("row").toInt(), 0);
    QCOMPARE(itemsOf(*parts.lin->typeCombo(0)), (QStringList{"Master", "Slave"}));
    QCOMPARE(parts.lin->typeCombo(0)->currentText(), QStringLiteral("Master"));
    QCOMPARE(parts.lin->typeCombo(1)->currentText(), QStringLiteral("Slave"));
    QCOMPARE(parts.lin->rateCombo(0)->count(), 5);
    QCOMPARE(parts.lin->rateCombo(0)->currentText(), QStringLiteral("19.2 kbit/s"));
    QVERIFY(!parts.lin->configureButton(0));
}

void TestConfigDialog::combosWriteIntoTheRecord()
{
    QCOMPARE(m_store->addDevice(0, {2, 1}), 0);
    const auto dialog = makeDialog();
    const ConfigDialogParts parts(*dialog);
    parts.can->typeCombo(1)->setCurrentText(QStringLiteral("CAN"));
    parts.can->rateCombo(1)->setCurrentText(QStringLiteral("33.33 kbit/s"));
    parts.can->dataRateCombo(1)->setCurrentText(QStringLiteral("8 Mbit/s"));
    parts.lin->typeCombo(0)->setCurrentText(QStringLiteral("Slave"));
    QTest::keyClick(parts.lin->rateCombo(0), Qt::Key_End);
    const TzVciCanChannelConfig *can = m_store->canChannelConfig(0, 1);
    QCOMPARE(can->type.value(), QStringLiteral("CAN"));
    QCOMPARE(can->baudRate.value(), 33333u);
    QCOMPARE(can->fdBaudRate.value(), 8000000u);
    QCOMPARE(m_store->canChannelConfig(0, 0)->baudRate.value(), 500000u);
    QCOMPARE(m_store->linChannelConfig(0, 0)->type.value(), QStringLiteral("Slave"));
    QCOMPARE(m_store->linChannelConfig(0, 0)->baudRate.value(), 2400u);
}

void TestConfigDialog::theWheelDoesNotChangeACell()
{
    QCOMPARE(m_store->addDevice(0, {1, 0}), 0);
    const auto dialog = makeDialog();
    QComboBox *combo = ConfigDialogParts(*dialog).can->rateCombo(0);
    QWheelEvent wheel(QPointF(4, 4), combo->mapToGlobal(QPoint(4, 4)), QPoint(), QPoint(0, -120), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(combo, &wheel);
    QCOMPARE(combo->currentText(), QStringLiteral("500 kbit/s"));
}

void TestConfigDialog::fillingAComboNeverWrites()
{
    QCOMPARE(m_store->addDevice(0, {1, 1}), 0);
    m_store->canChannelConfig(0, 0)->baudRate = 123456u;
    m_store->canChannelConfig(0, 0)->fdBaudRate = 7000000u;
    m_store->linChannelConfig(0, 0)->baudRate = 9601u;
    const auto dialog = makeDialog();
    const ConfigDialogParts parts(*dialog);
    QCOMPARE(parts.can->rateCombo(0)->currentText(), QStringLiteral("123456 bit/s"));
    QCOMPARE(parts.can->dataRateCombo(0)->currentText(), QStringLiteral("7000000 bit/s"));
    QCOMPARE(parts.lin->rateCombo(0)->currentText(), QStringLiteral("9601 bit/s"));
    QCOMPARE(m_store->canChannelConfig(0, 0)->baudRate.value(), 123456u);
    QCOMPARE(m_store->canChannelConfig(0, 0)->fdBaudRate.value(), 7000000u);
    QCOMPARE(m_store->linChannelConfig(0, 0)->baudRate.value(), 9601u);

    parts.can->rateCombo(0)->setCurrentText(QStringLiteral("1 Mbit/s"));
    parts.can->rateCombo(0)->setCurrentText(QStringLiteral("123456 bit/s"));
    QCOMPARE(m_store->canChannelConfig(0, 0)->baudRate.value(), 123456u);
}

void TestConfigDialog::ldfColumnIsAnEmptyCell()
{
    QCOMPARE(m_store->addDevice(0, {0, 1}), 0);
    const auto dialog = makeDialog();
    const ConfigDialogParts parts(*dialog);
    QVERIFY(!parts.lin->cellWidget(0, TzVciChannelTable::LdfColumn));
    QVERIFY(!parts.lin->item(0, TzVciChannelTable::LdfColumn));
}

void TestConfigDialog::configureRunsTheBitTimingDialogOfItsRow()
{
    QCOMPARE(m_store->addDevice(4, {3, 0}), 0);
    tztest::MessageBoxDriver driver;
    QString title;
    driver.expectDialog([&title](QDialog *shown) {
        title = shown->windowTitle();
        shown->reject();
    });
    const auto dialog = makeDialog();
    QTest::mouseClick(ConfigDialogParts(*dialog).can->configureButton(2), Qt::LeftButton);
    QCOMPARE(title, QStringLiteral("CAN FD Advanced Configuration - Device 4 CAN3"));
}

void TestConfigDialog::localIpIsStoredTrimmedOnEditingFinished()
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

void TestConfigDialog::localIpIsStoredTrimmedBeforeStart()
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

void TestConfigDialog::enterInTheLocalIpStartsNothing()
{
    QCOMPARE(m_store->addDevice(0, {1, 0}), 0);
    const auto dialog = makeDialog();
    const ConfigDialogParts parts(*dialog);
    QTest::keyClick(parts.localIp, Qt::Key_Return);
    QVERIFY(dialog->isVisible());
    QVERIFY(!parts.toggle->isChecked());
    QVERIFY(!m_scanner->isScanning());
}

void TestConfigDialog::startWithoutABoxShowsAnErrorAndUnchecks()
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

void TestConfigDialog::channelOfAClosedDeviceShowsTheCode()
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

void TestConfigDialog::showsADeviceThatIsAddedWhileItIsOpen()
{
    const auto dialog = makeDialog();
    const ConfigDialogParts parts(*dialog);
    QCOMPARE(m_store->addDevice(2, {4, 0}), 0);
    QVERIFY(tztest::waitFor([&] { return parts.can->rowCount() == 4; }));
    QVERIFY(parts.toggle->isEnabled());
}

void TestConfigDialog::closingSavesTheSettings()
{
    QCOMPARE(m_store->addDevice(0, {1, 0}), 0);
    const auto dialog = makeDialog();
    ConfigDialogParts(*dialog).can->rateCombo(0)->setCurrentText(QStringLiteral("250 kbit/s"));
    QVERIFY(!QFile::exists(QStringLiteral("config/vci/vci_config.json")));
    dialog->close();
    QVERIFY(!dialog->isVisible());
    QFile file(QStringLiteral("config/vci/vci_config.json"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().contains("\"250000\""));
}

void TestConfigDialog::quittingUnderTheDialogSavesTheSettings()
{
    QCOMPARE(m_store->addDevice(0, {1, 0}), 0);
    auto dialog = makeDialog();
    ConfigDialogParts(*dialog).localIp->setText(QStringLiteral("127.0.0.9")); // being typed
    dialog.reset();
    QFile file(QStringLiteral("config/vci/vci_config.json"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().contains("\"127.0.0.9\""));
}

void TestConfigDialog::quittingUnderTheOpenErrorSavesTheSettings()
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
    QFile file(QStringLiteral("config/vci/vci_config.json"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().contains("\"127.0.0.9\""));
}

void TestConfigDialog::slotsWithoutAClickDoNothing()
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

void TestConfigDialog::enterClicksTheFocusedButton()
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

void TestConfigDialog::tabScrollsToTheControl()
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

void TestConfigDialog::fitsTheScreen()
{
    const auto dialog = makeDialog();
    const QSize available = dialog->screen()->availableGeometry().size();
    QCOMPARE(dialog->size(), QSize(856, 720).boundedTo(available).expandedTo(dialog->minimumSizeHint()));
}

void TestConfigDialog::openingLoadsTheSettings()
{
    {
        TzVciDeviceStore earlierRun;
        for (const int index : {0, 3})
            QCOMPARE(earlierRun.addDevice(index, {1, 1}), 0);
        earlierRun.setCurrentDevice(3);
        earlierRun.canChannelConfig(3, 0)->type = QStringLiteral("CANFDBRS");
        earlierRun.setLocalIP(3, QStringLiteral("127.0.0.5"));
        QVERIFY(earlierRun.saveConfig());
    }
    for (const int index : {0, 3})
        QCOMPARE(m_store->addDevice(index, {1, 1}), 0);
    const auto dialog = makeDialog();
    const ConfigDialogParts parts(*dialog);
    QCOMPARE(parts.devices->currentRow(), 1);
    QCOMPARE(parts.localIp->text(), QStringLiteral("127.0.0.5"));
    QCOMPARE(parts.can->typeCombo(0)->currentText(), QStringLiteral("CANFDBRS"));
}

void TestConfigDialog::statesFollowTheStore()
{
    QCOMPARE(m_store->addDevice(0, {1, 0}), 0);
    const auto dialog = makeDialog();
    const ConfigDialogParts parts(*dialog);
    m_store->setDeviceOpen(0, true);
    m_store->setChannelOpen(0, TzVciProtocolId::can, 0, true);
    QVERIFY(tztest::waitFor([&] { return parts.toggle->isChecked(); }));
    QCOMPARE(parts.toggle->text(), QStringLiteral("Stop"));
    QCOMPARE(parts.can->channelButton(0)->toolTip(), QStringLiteral("Close CAN1"));
    QVERIFY(parts.devices->item(0)->toolTip().contains(QStringLiteral("Opened")));
}
