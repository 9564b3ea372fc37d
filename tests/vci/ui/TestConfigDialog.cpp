// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/vci/ui/TestConfigDialog.h"

#include "tests/support/IconCompare.h"
#include "tests/support/MessageBoxDriver.h"
#include "tests/support/WaitFor.h"
#include "tests/vci/ui/ConfigDialogParts.h"
#include "vci/TzVciTypes.h"

#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QScreen>
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

void TestConfigDialog::showsADeviceThatIsAddedWhileItIsOpen()
{
    const auto dialog = makeDialog();
    const ConfigDialogParts parts(*dialog);
    QCOMPARE(m_store->addDevice(2, {4, 0}), 0);
    QVERIFY(tztest::waitFor([&] { return parts.can->rowCount() == 4; }));
    QVERIFY(parts.toggle->isEnabled());
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
