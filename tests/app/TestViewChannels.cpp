// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/TestViewChannels.h"

#include "tests/app/AppFixture.h"
#include "tests/app/PlainView.h"
#include "tests/support/LogCapture.h"
#include "tests/support/MessageBoxDriver.h"
#include "tests/support/WaitFor.h"

#include <QAbstractButton>
#include <QMessageBox>
#include <QSignalSpy>
#include <QTableView>
#include <QtTest>

using tztest::PlainView;

namespace {

using Titles = std::vector<QString>;
constexpr std::uint8_t can = TzVciProtocolId::can;
constexpr std::uint8_t lin = TzVciProtocolId::lin;

/// The rows that a view shows, counted from 0.
int rowsOf(tztest::AppFixture &fixture, std::size_t view)
{
    return fixture.helper().views().views().at(view)->findChild<QTableView *>()->model()->rowCount();
}

tzsim::CanFrame canFrame(std::uint32_t id)
{
    constexpr std::array<std::uint8_t, 2> data{1, 2};
    return tzsim::CanFrame::make(id, data);
}

} // namespace

void TestViewChannels::openingACanChannelWithOnlyALinViewOpensACanView()
{
    tztest::AppFixture fixture(1);
    fixture.openViews(0, 1);
    QVERIFY(fixture.openAll(0, can, 0));
    QCOMPARE(fixture.titles(), (Titles{"View1 For LIN", "View2 For CAN"}));
    QVERIFY(fixture.openChannel(0, can, 1)); // there is one now
    QSignalSpy status(&fixture.helper(), &TzBenchWindowHelper::sigVciStatusChanged);
    QVERIFY(tztest::waitFor([&] { return status.count() > 0; }));
    QCOMPARE(fixture.titles().size(), std::size_t{2});
}

void TestViewChannels::openingACanChannelWithADbcViewOpensNone()
{
    tztest::AppFixture fixture(1);
    auto *dbc = new PlainView(TzVciViewKind::dbc);
    fixture.helper().addView(dbc); // the area's from here on
    QSignalSpy cleared(&fixture.helper(), &TzBenchWindowHelper::sigClearViewWindow);
    QVERIFY(fixture.openAll(0, can, 0));
    QCOMPARE(cleared.count(), 1); // the channel has been heard of
    fixture.simulator.box(0).injectCan(0, canFrame(0x123));
    QVERIFY(tztest::waitFor([&] { return dbc->received() == 1; }));
    QCOMPARE(fixture.titles(), (Titles{"View1 For DBC"}));
}

void TestViewChannels::decodedViewsCountForTheirFamily()
{
    TzViewList list;
    PlainView dbc(TzVciViewKind::dbc);
    list.append(&dbc);
    QVERIFY(list.hasFamily(can));
    QVERIFY(!list.hasFamily(lin));
    PlainView ldf(TzVciViewKind::ldf);
    list.append(&ldf);
    QVERIFY(list.hasFamily(lin));
    QVERIFY(list.remove(&dbc));
    QVERIFY(!list.remove(&dbc));
    QVERIFY(!list.hasFamily(can));
}

void TestViewChannels::openingALinChannelOpensALinView()
{
    tztest::AppFixture fixture(1);
    QVERIFY(fixture.openAll(0, lin, 0));
    QCOMPARE(fixture.titles(), (Titles{"View1 For LIN"}));
    QVERIFY(!fixture.helper().isDraining(can));
}

void TestViewChannels::atTheLimitAnAutomaticViewIsOneInfoLine()
{
    const tztest::LogCapture log;
    tztest::AppFixture fixture(1);
    fixture.openViews(4);
    tztest::MessageBoxDriver driver;
    QVERIFY(fixture.openDevice(0));
    QVERIFY(fixture.openChannel(0, lin, 0));
    QVERIFY(tztest::waitFor([&] { return fixture.helper().isDraining(lin); }));
    QCOMPARE(log.count(1, "No view of kind 5 is opened by itself: 4 views are open already"), std::size_t{1});
    QCOMPARE(fixture.titles().size(), std::size_t{4});
    QCOMPARE(driver.seen().size(), std::size_t{0});
}

void TestViewChannels::theFirstCanChannelEmptiesTheViewsAndTheSecondDoesNot()
{
    tztest::AppFixture fixture(1);
    fixture.openViews(1, 1);
    QSignalSpy cleared(&fixture.helper(), &TzBenchWindowHelper::sigClearViewWindow);
    QSignalSpy status(&fixture.helper(), &TzBenchWindowHelper::sigVciStatusChanged);
    QVERIFY(fixture.openAll(0, can, 0));
    QCOMPARE(cleared.count(), 1);
    QCOMPARE(cleared.front().front().value<std::uint8_t>(), can);
    fixture.simulator.box(0).injectCan(0, canFrame(0x123));
    QVERIFY(tztest::waitFor([&] { return fixture.countersOf(0).total == 1; }));
    QVERIFY(fixture.openChannel(0, can, 1));
    QVERIFY(tztest::waitFor([&] { return status.count() == 2; }));
    QCOMPARE(cleared.count(), 1);
    QCOMPARE(fixture.countersOf(0).total, std::uint64_t{1});
    QVERIFY(fixture.openAll(0, lin, 0));
    QCOMPARE(cleared.count(), 2);
    QCOMPARE(cleared.back().front().value<std::uint8_t>(), lin);
    QCOMPARE(fixture.countersOf(0).total, std::uint64_t{1});
}

void TestViewChannels::closingTheLastCanChannelOfOneDeviceLeavesTheTimerOfAnotherRunning()
{
    tztest::AppFixture fixture(2);
    QVERIFY(fixture.openAll(0, can, 0));
    QVERIFY(fixture.openAll(1, can, 0));
    QSignalSpy status(&fixture.helper(), &TzBenchWindowHelper::sigVciStatusChanged);
    QCOMPARE(fixture.manager.closeChannel(0, can, 0), TzVciResult::ok);
    QVERIFY(tztest::waitFor(
        [&] { return !status.isEmpty() && status.back().at(1).value<std::uint8_t>() == VciStatus::canChannelClosed; }));
    QVERIFY(fixture.helper().isDraining(can));
    fixture.simulator.box(1).injectCan(0, canFrame(0x321));
    QVERIFY(tztest::waitFor([&] { return fixture.countersOf(0).total == 1; }));
}

void TestViewChannels::closingTheLastChannelStopsTheTimer()
{
    tztest::AppFixture fixture(1);
    QVERIFY(fixture.openAll(0, can, 0));
    QVERIFY(fixture.openAll(0, lin, 0));
    QCOMPARE(fixture.manager.closeChannel(0, can, 0), TzVciResult::ok);
    QVERIFY(tztest::waitFor([&] { return !fixture.helper().isDraining(can); }));
    QVERIFY(fixture.helper().isDraining(lin));
    QCOMPARE(fixture.manager.closeDevice(0), TzVciResult::ok);
    QVERIFY(tztest::waitFor([&] { return !fixture.helper().isDraining(lin); }));
}

void TestViewChannels::framesReachEveryViewOfTheirFamily()
{
    tztest::AppFixture fixture(1);
    fixture.openViews(2, 2);
    QVERIFY(fixture.openAll(0, can, 0));
    QVERIFY(fixture.openAll(0, lin, 0));
    for (std::uint32_t id = 0; id < 50; ++id)
        fixture.simulator.box(0).injectCan(0, canFrame(id));
    constexpr std::array<std::uint8_t, 2> data{1, 2};
    fixture.simulator.box(0).injectLin(0, tzsim::LinFrame::make(0x11, data));
    QVERIFY(tztest::waitFor([&] { return fixture.countersOf(0).rx == 50 && fixture.countersOf(1).rx == 50; }));
    QVERIFY(tztest::waitFor([&] { return fixture.countersOf(2).total == 1 && fixture.countersOf(3).total == 1; }));
}

void TestViewChannels::clearButtonOfAViewReachesThatViewAlone()
{
    tztest::AppFixture fixture(1);
    fixture.openViews(2);
    QVERIFY(fixture.openAll(0, can, 0));
    for (std::uint32_t id = 0; id < 10; ++id)
        fixture.simulator.box(0).injectCan(0, canFrame(id));
    QVERIFY(tztest::waitFor([&] { return rowsOf(fixture, 0) == 10 && rowsOf(fixture, 1) == 10; }));
    tztest::MessageBoxDriver driver;
    driver.expectBox(QMessageBox::Yes);
    auto *clear = fixture.helper().views().views().at(0)->findChild<QAbstractButton *>(QStringLiteral("buttonClear"));
    QVERIFY(clear);
    QTest::mouseClick(clear, Qt::LeftButton);
    QVERIFY(tztest::waitFor([&] { return driver.allMet() && rowsOf(fixture, 0) == 0; }));
    QCOMPARE(fixture.countersOf(0).total, std::uint64_t{0});
    QCOMPARE(rowsOf(fixture, 1), 10);
    QCOMPARE(fixture.countersOf(1).total, std::uint64_t{10});
}

void TestViewChannels::clearSignalOfADecodedKindReachesItsFamily()
{
    tztest::AppFixture fixture;
    fixture.openViews(2, 2);
    const auto fill = [&] {
        for (TzVciBaseViewWindow *view : fixture.helper().views().views()) {
            view->onReceivedMessages({TzVciMessage{}}); // no drain runs here
            view->onUpdateData();
        }
    };
    const auto rowsAndTotals = [&] {
        std::vector<std::pair<int, std::uint64_t>> result;
        for (std::size_t view = 0; view < 4; ++view)
            result.emplace_back(rowsOf(fixture, view), fixture.countersOf(view).total);
        return result;
    };
    using Result = decltype(rowsAndTotals());
    fill();
    QCOMPARE(rowsAndTotals(), (Result{{1, 1}, {1, 1}, {1, 1}, {1, 1}}));
    Q_EMIT fixture.helper().sigClearViewWindow(TzVciViewKind::dbc);
    QCOMPARE(rowsAndTotals(), (Result{{0, 0}, {0, 0}, {1, 1}, {1, 1}}));
    fill();
    Q_EMIT fixture.helper().sigClearViewWindow(TzVciViewKind::ldf);
    QCOMPARE(rowsAndTotals(), (Result{{1, 1}, {1, 1}, {0, 0}, {0, 0}}));
}

void TestViewChannels::viewsMayCloseWhileFramesFlow()
{
    tztest::AppFixture fixture(1);
    QVERIFY(fixture.openAll(0, can, 0));
    fixture.startLoad(0, 20000);
    for (int round = 0; round < 10; ++round) {
        fixture.openViews(4 - static_cast<int>(fixture.titles().size()));
        QVERIFY(tztest::waitFor([&] { return fixture.countersOf(3).total > 100; }));
        fixture.area().subWindowList().at(round % 4)->close();
        QCoreApplication::processEvents();
    }
    fixture.helper().closeViews();
    QVERIFY(fixture.titles().empty());
}

void TestViewChannels::viewsMayBeDestroyedUnclosedWhileFramesFlow()
{
    tztest::AppFixture fixture(1);
    QVERIFY(fixture.openAll(0, can, 0));
    fixture.startLoad(0, 20000);
    tztest::MessageBoxDriver driver;
    for (int round = 0; round < 10; ++round) {
        fixture.openViews(4 - static_cast<int>(fixture.titles().size()));
        QVERIFY(tztest::waitFor([&] { return fixture.countersOf(3).total > 100; }));
        delete fixture.area().subWindowList().at(round % 4);
        QCOMPARE(fixture.titles(), (Titles{"View1 For CAN", "View2 For CAN", "View3 For CAN"}));
    }
    QVERIFY(fixture.helper().isDraining(can));
    QCOMPARE(driver.seen().size(), std::size_t{0});
}
