// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/vci/ui/TestBusLoadView.h"

#include "common/ui/WorkbenchStyle.h"
#include "tests/support/IconCompare.h"
#include "tests/support/LogCapture.h"
#include "tests/support/WaitFor.h"
#include "vci/TzVciByteOrder.h"
#include "vci/TzVciDeviceBusLoad.h"
#include "vci/TzVciProtocol.h"
#include "vci/TzVciTypes.h"

#include <QApplication>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTimer>
#include <QtTest>

#include <atomic>
#include <thread>

using namespace std::chrono_literals;

namespace {

constexpr std::uint8_t can = TzVciProtocolId::can;
const QString noCounters = QStringLiteral("- / -");

} // namespace

void TestBusLoadView::initTestCase()
{
    Common::applyWorkbenchStyle(*qApp);
}

void TestBusLoadView::init()
{
    m_workDir = std::make_unique<tztest::TempWorkDir>();
    m_simulator = std::make_unique<tzsim::Simulator>();
    m_store = std::make_unique<TzVciDeviceStore>();
    m_manager = std::make_unique<TzVciDeviceManager>(m_store.get());
}

void TestBusLoadView::cleanup()
{
    m_view.reset();
    m_manager.reset();
    m_store.reset();
    m_simulator.reset();
    m_workDir.reset();
}

void TestBusLoadView::startBoxes(int canChannels)
{
    for (const int index : {2, 5}) {
        m_simulator->addBox({.index = index, .canChannels = canChannels, .linChannels = 1, .busLoadPeriod = 0ms});
        QCOMPARE(m_store->addDevice(index, TzVciDeviceConfig(canChannels, 1)), 0);
    }
    std::string error;
    QVERIFY2(m_simulator->start(&error), error.c_str());
}

void TestBusLoadView::openCan(int deviceIndex, int channel)
{
    if (!m_store->isDeviceOpen(deviceIndex))
        QCOMPARE(m_manager->openDevice(deviceIndex), 0);
    QCOMPARE(m_manager->openChannel(deviceIndex, can, channel), 0);
}

void TestBusLoadView::makeView()
{
    m_view = std::make_unique<TzVciBusLoadView>(m_manager.get(), m_store.get());
    m_list = m_view->findChild<QListWidget *>(QStringLiteral("listDevices"));
    m_refresh = m_view->findChild<QPushButton *>(QStringLiteral("buttonRefresh"));
    m_pc = m_view->findChild<QLabel *>(QStringLiteral("labelPcCounters"));
    m_device = m_view->findChild<QLabel *>(QStringLiteral("labelDeviceCounters"));
    m_table = m_view->findChild<QTableWidget *>(QStringLiteral("tableBusLoad"));
    m_view->show();
}

// A report of device 2 with these numbers, handed over to the window.
void TestBusLoadView::sendReport(const std::vector<std::uint32_t> &numbers)
{
    std::vector<std::uint8_t> payload(4 * numbers.size());
    for (std::size_t i = 0; i < numbers.size(); ++i)
        TzVciByteOrder::store(&payload[4 * i], numbers[i]);
    const auto device = m_manager->getDevice(2);
    QVERIFY(tztest::waitFor([&] { return !device->busLoad()->hasNewData(); }));
    QVERIFY(m_simulator->box(2).sendFrame(can, TzVciCommand::busLoad, 0, 0, payload));
    QVERIFY(tztest::waitFor([&] { return device->busLoad()->hasNewData(); }));
    m_view->updateBusLoadInfo();
}

QStringList TestBusLoadView::rowTexts(int row) const
{
    QStringList texts;
    for (int column = 0; column < m_table->columnCount(); ++column)
        texts.append(m_table->item(row, column)->text());
    return texts;
}

void TestBusLoadView::textsSizeAndIcon()
{
    makeView();
    QCOMPARE(m_view->windowTitle(), QStringLiteral("Bus Load Monitor"));
    QCOMPARE(m_view->size(), QSize(640, 480));
    QVERIFY(showsIcon(m_view->windowIcon(), ":/resource/busload.png"));
    QStringList groups;
    for (const QGroupBox *group : m_view->findChildren<QGroupBox *>())
        groups.append(group->title());
    groups.sort();
    QCOMPARE(groups, (QStringList{"Available Devices", "Bus Load && Statistics"})); // "&&" shows "&"
    QStringList labels;
    for (const QLabel *label : m_view->findChildren<QLabel *>())
        labels.append(label->text());
    QVERIFY(labels.contains("PC TX / RX:"));
    QVERIFY(labels.contains("Device RX / Tx:"));
    QCOMPARE(m_refresh->text(), QStringLiteral("Refresh Devices"));
    QStringList headers;
    for (int column = 0; column < m_table->columnCount(); ++column)
        headers.append(m_table->horizontalHeaderItem(column)->text());
    QCOMPARE(headers, (QStringList{"Channel", "Messages", "Bus Load", "Period Time"}));
    QCOMPARE(m_view->findChild<QTimer *>()->interval(), 1000);
    QVERIFY(!m_view->isModal());
}

void TestBusLoadView::withoutADeviceTheDisplayIsClear()
{
    makeView();
    QCOMPARE(m_list->count(), 0);
    QCOMPARE(m_pc->text(), noCounters);
    QCOMPARE(m_device->text(), noCounters);
    QCOMPARE(m_table->rowCount(), 0);
    QTest::mouseClick(m_refresh, Qt::LeftButton);
    m_view->updateBusLoadInfo();
    QCOMPARE(m_pc->text(), noCounters);
}

void TestBusLoadView::listHoldsTheDevicesWithAnOpenCanChannel()
{
    startBoxes();
    openCan(5, 0);
    QCOMPARE(m_manager->openDevice(2), 0);
    QCOMPARE(m_manager->openChannel(2, TzVciProtocolId::lin, 0), 0);
    makeView();
    QCOMPARE(m_list->count(), 1);
    QCOMPARE(m_list->item(0)->text(), QStringLiteral("Device 5"));
    QCOMPARE(m_list->item(0)->data(Qt::UserRole).toInt(), 5);
    QCOMPARE(m_list->currentRow(), 0);
}

void TestBusLoadView::refreshTakesUpDevicesThatOpenedAndClosed()
{
    startBoxes();
    openCan(5, 0);
    makeView();
    openCan(2, 0);
    m_view->updateBusLoadInfo();
    QCOMPARE(m_list->count(), 1); // only the button looks for devices
    QTest::mouseClick(m_refresh, Qt::LeftButton);
    QCOMPARE(m_list->count(), 2);
    QCOMPARE(m_list->item(0)->text(), QStringLiteral("Device 2"));
    QCOMPARE(m_list->currentRow(), 0);

    m_manager->closeAllDevices();
    QTest::mouseClick(m_refresh, Qt::LeftButton);
    QCOMPARE(m_list->count(), 0);
    QCOMPARE(m_table->rowCount(), 0);
    QCOMPARE(m_pc->text(), noCounters);
}

void TestBusLoadView::showsLoadAndCountersOnceASecond()
{
    startBoxes();
    openCan(2, 0);
    openCan(2, 2);
    makeView();
    QCOMPARE(m_table->rowCount(), 2); // at once, still without a report
    QCOMPARE(rowTexts(0), (QStringList{"CAN1", "0", "0.00%", "0.0 ms"}));
    m_simulator->box(2).setBusLoadPeriod(100ms);
    m_simulator->box(2).startLoad({.framesPerSecond = 2000, .canChannels = {0, 2}});
    QVERIFY(tztest::waitFor([&] { return rowTexts(0).at(1).toInt() > 0 && rowTexts(1).at(1).toInt() > 0; }));
    QCOMPARE(rowTexts(0).at(0), QStringLiteral("CAN1"));
    QCOMPARE(rowTexts(1).at(0), QStringLiteral("CAN3"));
    const QRegularExpression load(QStringLiteral("^[0-9]+\\.[0-9]{2}%$"));
    const QRegularExpression period(QStringLiteral("^[0-9]+\\.[0-9] ms$"));
    QVERIFY2(load.match(rowTexts(0).at(2)).hasMatch(), qPrintable(rowTexts(0).at(2)));
    QVERIFY2(period.match(rowTexts(0).at(3)).hasMatch(), qPrintable(rowTexts(0).at(3)));
    const QRegularExpression pc(QStringLiteral("^[1-9][0-9]* B, [1-9][0-9]* / [1-9][0-9]* B, [1-9][0-9]*$"));
    QVERIFY2(pc.match(m_pc->text()).hasMatch(), qPrintable(m_pc->text()));
    const QRegularExpression device(QStringLiteral("^[1-9][0-9]* B, [1-9][0-9]* / [1-9][0-9]* B$"));
    QVERIFY2(device.match(m_device->text()).hasMatch(), qPrintable(m_device->text()));
    const QString before = m_pc->text();
    QVERIFY(tztest::waitFor([&] { return m_pc->text() != before; })); // by the timer
}

void TestBusLoadView::selectionOfAnotherDeviceShowsItAtOnce()
{
    startBoxes();
    openCan(2, 0);
    openCan(5, 1);
    makeView();
    QCOMPARE(rowTexts(0).at(0), QStringLiteral("CAN1"));
    const QRect second = m_list->visualItemRect(m_list->item(1));
    QTest::mouseClick(m_list->viewport(), Qt::LeftButton, Qt::NoModifier, second.center());
    QCOMPARE(m_table->rowCount(), 1);
    QCOMPARE(rowTexts(0).at(0), QStringLiteral("CAN2"));
    m_view->onDeviceSelected(-1);
    QCOMPARE(m_table->rowCount(), 0);
    QCOMPARE(m_device->text(), noCounters);
}

void TestBusLoadView::rowsFollowTheOpenChannelsOfTheDevice()
{
    startBoxes();
    openCan(2, 1);
    makeView();
    sendReport({1'000'000, 1, 10'000, 22, 255'561, 333, 500'000, 4, 1, 30, 20, 10});
    QCOMPARE(rowTexts(0), (QStringList{"CAN2", "22", "25.56%", "1000.0 ms"}));
    // The counters of a report for four channels leave out its own 57 bytes.
    QCOMPARE(m_device->text(), QStringLiteral("20 B, 30 / 67 B"));
    openCan(2, 2);
    m_view->updateBusLoadInfo();
    QCOMPARE(m_table->rowCount(), 2);
    QCOMPARE(rowTexts(1), (QStringList{"CAN3", "333", "50.00%", "1000.0 ms"}));
    QCOMPARE(m_manager->closeChannel(2, can, 1), 0);
    m_view->updateBusLoadInfo();
    QCOMPARE(m_table->rowCount(), 1);
    QCOMPARE(rowTexts(0).at(0), QStringLiteral("CAN3"));
}

void TestBusLoadView::aReportBetweenMinimumAndFullLengthLeavesTheDeviceCounters()
{
    startBoxes(2);
    openCan(2, 0);
    makeView();
    sendReport({1'000'000, 1, 10'000, 2, 20'000, 30, 20, 10});
    QCOMPARE(m_device->text(), QStringLiteral("20 B, 30 / 51 B"));
    sendReport({500'000, 7, 50'000, 2, 20'000, 99}); // 24 bytes: two channels need 20, the counters 32
    QCOMPARE(rowTexts(0), (QStringList{"CAN1", "7", "10.00%", "500.0 ms"}));
    QCOMPARE(m_device->text(), QStringLiteral("20 B, 30 / 51 B"));
}

void TestBusLoadView::aPeriodOfZeroChangesNothing()
{
    startBoxes(2);
    openCan(2, 0);
    makeView();
    sendReport({1'000'000, 1, 10'000, 2, 20'000, 30, 20, 10});
    sendReport({0, 5, 5, 5, 5, 5, 5, 5});
    QCOMPARE(rowTexts(0), (QStringList{"CAN1", "1", "1.00%", "1000.0 ms"}));
    QCOMPARE(m_device->text(), QStringLiteral("20 B, 30 / 51 B"));
}

void TestBusLoadView::moreChannelsThanARecordHoldsShowWhatArrived()
{
    startBoxes(20);
    openCan(2, 13);
    openCan(2, 14);
    makeView();
    const tztest::LogCapture log;
    std::vector<std::uint32_t> numbers{1'000'000};
    for (std::uint32_t channel = 0; channel < 20; ++channel)
        numbers.insert(numbers.end(), {channel + 1, 10'000 * channel});
    numbers.insert(numbers.end(), {30, 20, 10});
    sendReport(numbers);
    QCOMPARE(rowTexts(0), (QStringList{"CAN14", "14", "13.00%", "1000.0 ms"}));
    QCOMPARE(rowTexts(1).at(1), QStringLiteral("0")); // the record ends within this channel
    QCOMPARE(m_device->text(), QStringLiteral("0 B, 0 / 0 B"));
    QVERIFY(
        log.has(2, "Received busload data is too short. Expected at least 164 bytes for 20 channels, but got 122."));
}

void TestBusLoadView::countersReachTheirLimitAndWrap()
{
    startBoxes(2);
    openCan(2, 0);
    makeView();
    constexpr std::uint32_t most = 0xFFFFFFFF;
    sendReport({1'000'000, most, 500'000, 0, 0, most, 3'000'000'000, most});
    QCOMPARE(rowTexts(0), (QStringList{"CAN1", "4294967295", "50.00%", "1000.0 ms"}));
    // With the 41 bytes of the report itself the device's counter begins anew, as the device's own does.
    QCOMPARE(m_device->text(), QStringLiteral("3000000000 B, 4294967295 / 40 B"));
}

void TestBusLoadView::aVanishedDeviceClearsTheDisplay()
{
    startBoxes();
    openCan(2, 0);
    makeView();
    QCOMPARE(m_table->rowCount(), 1);
    m_simulator->box(2).vanish();
    m_manager->getDevice(2)->send(std::vector<char>(1, 'x')); // meets the closed port
    QVERIFY(tztest::waitFor([&] { return m_pc->text() == noCounters; }));
    QVERIFY(m_manager->getDevice(2)); // what is left of it stays with the manager
    QCOMPARE(m_device->text(), noCounters);
    QCOMPARE(m_table->rowCount(), 0);
    QCOMPARE(m_list->count(), 1); // until the user refreshes
}

void TestBusLoadView::aClosedDeviceClearsTheDisplayAndComesBack()
{
    startBoxes();
    openCan(2, 0);
    makeView();
    QCOMPARE(m_manager->closeDevice(2), 0);
    m_view->updateBusLoadInfo();
    QCOMPARE(m_pc->text(), noCounters);
    QCOMPARE(m_table->rowCount(), 0);
    openCan(2, 3);
    m_view->updateBusLoadInfo();
    QCOMPARE(rowTexts(0).at(0), QStringLiteral("CAN4"));
}

void TestBusLoadView::devicesMayCloseUnderTheUpdates()
{
    startBoxes();
    openCan(2, 0);
    makeView();
    m_simulator->box(2).setBusLoadPeriod(1ms);
    std::atomic<int> updates{0};
    std::atomic<bool> closed{false};
    std::thread closing([&] {
        while (updates < 100)
            std::this_thread::yield();
        m_manager->closeAllDevices();
        closed = true;
    });
    while (!closed) {
        m_view->updateBusLoadInfo();
        ++updates;
    }
    closing.join();
    m_view->updateBusLoadInfo();
    QCOMPARE(m_table->rowCount(), 0);
}

void TestBusLoadView::aHiddenWindowDoesNoWorkAndListsAnewWhenShown()
{
    startBoxes();
    makeView();
    const auto *timer = m_view->findChild<QTimer *>();
    QVERIFY(timer->isActive());
    m_view->close();
    QVERIFY(!timer->isActive());
    openCan(5, 0);
    m_view->showNormal();
    QVERIFY(timer->isActive());
    QCOMPARE(m_list->count(), 1);
    QCOMPARE(m_table->rowCount(), 1);
}

void TestBusLoadView::clockShowsDateAndTime()
{
    makeView();
    const auto *clock = m_view->findChild<QLabel *>(QStringLiteral("labelCurrentTime"));
    const auto time = [&] { return QDateTime::fromString(clock->text(), QStringLiteral("yyyy-MM-dd hh:mm:ss")); };
    QVERIFY(time().isValid());
    QVERIFY(qAbs(time().secsTo(QDateTime::currentDateTime())) < 60);
    const QString before = clock->text();
    QVERIFY(tztest::waitFor([&] { return clock->text() != before; }));
}

void TestBusLoadView::clockHasPlainDigitsWhateverTheLocale()
{
    const QLocale previous;
    QLocale::setDefault(QLocale(QLocale::Arabic, QLocale::Egypt));
    makeView();
    const QString text = m_view->findChild<QLabel *>(QStringLiteral("labelCurrentTime"))->text();
    QLocale::setDefault(previous);
    const QRegularExpression plain(QStringLiteral("^[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}$"));
    QVERIFY2(plain.match(text).hasMatch(), qPrintable(text));
}

void TestBusLoadView::tabReachesListButtonAndTable()
{
    makeView();
    m_view->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_view.get()));
    QCOMPARE(m_view->focusWidget(), m_list);
    QTest::keyClick(m_view.get(), Qt::Key_Tab);
    QCOMPARE(m_view->focusWidget(), m_refresh);
    QTest::keyClick(m_view.get(), Qt::Key_Tab);
    QCOMPARE(m_view->focusWidget(), m_table);
}
