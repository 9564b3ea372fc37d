// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/vci/ui/TestConfigDialogWithBox.h"

#include "common/ui/WorkbenchStyle.h"
#include "tests/support/MessageBoxDriver.h"
#include "tests/support/WaitFor.h"
#include "tests/vci/ui/ConfigDialogParts.h"
#include "vci/TzVciTypes.h"

#include <QApplication>
#include <QComboBox>
#include <QMessageBox>
#include <QtTest>

#include <algorithm>

namespace {

constexpr int boxIndex = 2;
constexpr std::uint8_t closeCommand = 0x20;
constexpr std::uint8_t parameterCommand = 0x60;
constexpr std::uint8_t openCommand = 0x10;

void click(QPushButton *button)
{
    QTest::mouseClick(button, Qt::LeftButton);
}

} // namespace

void TestConfigDialogWithBox::initTestCase()
{
    Common::applyWorkbenchStyle(*qApp);
}

void TestConfigDialogWithBox::init()
{
    m_workDir = std::make_unique<tztest::TempWorkDir>();
    m_simulator = std::make_unique<tzsim::Simulator>();
    m_box = &m_simulator->addBox({.index = boxIndex, .canChannels = 2, .linChannels = 2});
    std::string error;
    QVERIFY2(m_simulator->start(&error), error.c_str());
    m_store = std::make_unique<TzVciDeviceStore>();
    QCOMPARE(m_store->addDevice(boxIndex, {2, 2}), 0);
    m_scanner = std::make_unique<TzVciDeviceScanner>(m_store.get());
    m_manager = std::make_unique<TzVciDeviceManager>(m_store.get());
    m_dialog = std::make_unique<TzVciConfigDialog>(m_manager.get(), m_store.get(), m_scanner.get());
    m_dialog->show();
}

void TestConfigDialogWithBox::cleanup()
{
    m_dialog.reset();
    m_manager.reset();
    m_scanner.reset();
    m_store.reset();
    m_simulator.reset();
    m_workDir.reset();
}

void TestConfigDialogWithBox::startOpensTheDeviceAndStopClosesIt()
{
    tztest::MessageBoxDriver driver;
    const ConfigDialogParts parts(*m_dialog);
    click(parts.toggle);
    QVERIFY(m_store->isDeviceOpen(boxIndex));
    QVERIFY(m_manager->getDevice(boxIndex));
    QCOMPARE(parts.toggle->text(), QStringLiteral("Stop"));
    QVERIFY(parts.devices->item(0)->toolTip().contains(QStringLiteral("Opened")));

    click(parts.can->channelButton(1));
    QCOMPARE(m_box->openChannels(), 1);
    click(parts.toggle);
    QVERIFY(!m_store->isDeviceOpen(boxIndex));
    QVERIFY(!m_manager->getDevice(boxIndex));
    QCOMPARE(parts.toggle->text(), QStringLiteral("Start"));
    QCOMPARE(parts.can->channelButton(1)->toolTip(), QStringLiteral("Open CAN2"));
    QCOMPARE(m_box->openChannels(), 0);
    QCOMPARE(driver.unexpected(), 0);
}

void TestConfigDialogWithBox::channelButtonsOpenAndCloseTheirChannels()
{
    tztest::MessageBoxDriver driver;
    const ConfigDialogParts parts(*m_dialog);
    click(parts.toggle);
    parts.can->rateCombo(1)->setCurrentText(QStringLiteral("250 kbit/s"));
    parts.lin->rateCombo(0)->setCurrentText(QStringLiteral("9.6 kbit/s"));
    click(parts.can->channelButton(1));
    click(parts.lin->channelButton(0));
    QVERIFY(m_box->canChannel(1).open);
    QCOMPARE(m_box->canChannel(1).nominalRate, 250000u);
    QVERIFY(!m_box->canChannel(0).open);
    QVERIFY(m_box->linChannel(0).open);
    QVERIFY(m_box->linChannel(0).master);
    QCOMPARE(m_box->linChannel(0).rate, 9600u);
    QVERIFY(parts.can->channelButton(1)->isChecked());
    QCOMPARE(parts.can->channelButton(1)->toolTip(), QStringLiteral("Close CAN2"));
    QVERIFY(parts.devices->item(0)->toolTip().contains(QStringLiteral("<span class=\"opened\">CAN2</span>")));

    click(parts.can->channelButton(1));
    click(parts.lin->channelButton(0));
    QCOMPARE(m_box->openChannels(), 0);
    QVERIFY(!parts.can->channelButton(1)->isChecked());
    QCOMPARE(parts.lin->channelButton(0)->toolTip(), QStringLiteral("Open LIN1"));
    QCOMPARE(driver.unexpected(), 0);
}

void TestConfigDialogWithBox::classicCanChannelIgnoresTheSegments()
{
    const ConfigDialogParts parts(*m_dialog);
    click(parts.toggle);
    parts.can->typeCombo(0)->setCurrentText(QStringLiteral("CAN"));
    m_store->canChannelConfig(boxIndex, 0)->nominalSeg1 = 5;
    m_box->clearRequests();
    click(parts.can->channelButton(0));
    QVERIFY(m_box->canChannel(0).open);
    const auto requests = m_box->requests();
    QVERIFY(std::none_of(requests.begin(), requests.end(),
                         [](const tzsim::Request &request) { return request.command == parameterCommand; }));
}

void TestConfigDialogWithBox::fdChannelIsOpenedWithTheSegmentsOfItsRecord()
{
    const ConfigDialogParts parts(*m_dialog);
    click(parts.toggle);
    TzVciCanChannelConfig *config = m_store->canChannelConfig(boxIndex, 0);
    config->nominalSeg1 = 63;
    config->nominalSeg2 = 16;
    click(parts.can->channelButton(0));
    QCOMPARE(m_box->canChannel(0).timing, (std::array<std::uint8_t, 4>{63, 16, 15, 4}));
    QVERIFY(m_box->canChannel(0).applied);
}

void TestConfigDialogWithBox::refusedOpenShowsTheCode()
{
    tztest::MessageBoxDriver driver;
    driver.expectBox(QMessageBox::Ok);
    const ConfigDialogParts parts(*m_dialog);
    click(parts.toggle);
    m_box->refuse(TzVciProtocolId::can, openCommand, 0);
    click(parts.can->channelButton(0));
    QVERIFY(driver.allMet());
    QCOMPARE(driver.seen().front().title, QStringLiteral("Open CAN Error"));
    QCOMPARE(driver.seen().front().text,
             QStringLiteral("Error code -602, Please check whether the baud rate is set correctly or whether the "
                            "network is connected."));
    QVERIFY(!parts.can->channelButton(0)->isChecked());
}

void TestConfigDialogWithBox::refusedCloseShowsTheCode()
{
    tztest::MessageBoxDriver driver;
    driver.expectBox(QMessageBox::Ok);
    const ConfigDialogParts parts(*m_dialog);
    click(parts.toggle);
    click(parts.lin->channelButton(1));
    m_box->refuse(TzVciProtocolId::lin, closeCommand, 1);
    click(parts.lin->channelButton(1));
    QVERIFY(driver.allMet());
    QCOMPARE(driver.seen().front().title, QStringLiteral("Close LIN Error"));
    QCOMPARE(driver.seen().front().text, QStringLiteral("Close LIN channel error code -603."));
    QVERIFY(!parts.lin->channelButton(1)->isChecked()); // marked closed in either case
}

void TestConfigDialogWithBox::boxLostByALinkErrorIsOpenedAgain()
{
    tztest::MessageBoxDriver driver;
    const ConfigDialogParts parts(*m_dialog);
    click(parts.toggle);
    QVERIFY(m_store->isDeviceOpen(boxIndex));
    m_box->vanish();
    QVERIFY(tztest::waitFor([this] { return !m_store->isDeviceOpen(boxIndex); }));
    QVERIFY(m_manager->getDevice(boxIndex)); // the manager keeps what is left of it
    QVERIFY(tztest::waitFor([&] { return !parts.toggle->isChecked(); }));

    std::string error;
    QVERIFY2(m_box->comeBack(&error), error.c_str());
    click(parts.toggle);
    QVERIFY(m_store->isDeviceOpen(boxIndex));
    QVERIFY(parts.toggle->isChecked());
    click(parts.can->channelButton(0));
    QVERIFY(m_box->canChannel(0).open);
    QCOMPARE(driver.unexpected(), 0);
}
