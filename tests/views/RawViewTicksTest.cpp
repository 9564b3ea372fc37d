// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/views/RawViewTicksTest.h"

#include "tests/support/WaitFor.h"
#include "tests/views/RawViewWindowFixture.h"

#include <QScrollBar>

#include <stop_token>
#include <thread>

using namespace tztest;

namespace {

std::unique_ptr<RawViewWindowFixture> fixture;

} // namespace

void TestRawViewTicks::twins()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("CAN") << int{TzVciViewKind::can};
    QTest::newRow("LIN") << int{TzVciViewKind::lin};
}

void TestRawViewTicks::init()
{
    QFETCH(int, kind);
    fixture = std::make_unique<RawViewWindowFixture>(static_cast<std::uint8_t>(kind));
}

void TestRawViewTicks::cleanup()
{
    fixture.reset();
}

void TestRawViewTicks::visibleRowsFollowTheScrollBar()
{
    fixture->deliver(std::vector<TzVciMessage>(500, fixture->rx(1)));
    fixture->tickData();
    QScrollBar *bar = fixture->table()->verticalScrollBar();
    QTRY_VERIFY(bar->maximum() > 0);
    QSignalSpy visible(fixture->view.get(), &TzVciBaseViewWindow::sigUpdateVisibleRow);
    bar->setValue(bar->maximum());
    QVERIFY(!visible.isEmpty());
    QCOMPARE(visible.last()[1].toInt(), 499);
    bar->setValue(0);
    const int perPage = fixture->table()->viewport()->height() / 16;
    QCOMPARE(visible.last()[0].toInt(), 0);
    QCOMPARE(visible.last()[1].toInt(), perPage - 1);
}

void TestRawViewTicks::tickTellsVisibleRowsWithoutScrolling()
{
    fixture->deliver(std::vector<TzVciMessage>(3, fixture->rx(1)));
    fixture->tickData();
    QSignalSpy visible(fixture->view.get(), &TzVciBaseViewWindow::sigUpdateVisibleRow);
    fixture->tickUi();
    QVERIFY(!visible.isEmpty());
    QCOMPARE(visible.last()[1].toInt(), 2);
}

void TestRawViewTicks::viewAtItsEndFollowsNewRows()
{
    QScrollBar *bar = fixture->table()->verticalScrollBar();
    fixture->deliver(std::vector<TzVciMessage>(500, fixture->rx(1)));
    fixture->tickData();
    fixture->tickUi();
    QTRY_VERIFY(bar->maximum() > 0);
    QTRY_COMPARE(bar->value(), bar->maximum());
    bar->setValue(10);
    fixture->deliver(std::vector<TzVciMessage>(100, fixture->rx(1)));
    fixture->tickData();
    fixture->tickUi();
    QTRY_COMPARE(fixture->table()->model()->rowCount(), 600);
    QCOMPARE(bar->value(), 10);
    bar->setValue(bar->maximum());
    fixture->deliver(std::vector<TzVciMessage>(100, fixture->rx(1)));
    fixture->tickData();
    fixture->tickUi();
    QTRY_COMPARE(bar->value(), bar->maximum());
}

void TestRawViewTicks::smallerWindowKeepsFollowing()
{
    QScrollBar *bar = fixture->table()->verticalScrollBar();
    fixture->deliver(std::vector<TzVciMessage>(500, fixture->rx(1)));
    fixture->tickData();
    fixture->tickUi();
    QTRY_VERIFY(bar->maximum() > 0 && bar->value() == bar->maximum());
    fixture->view->resize(fixture->view->width(), fixture->view->height() / 2);
    fixture->tickUi();
    QTRY_COMPARE(bar->value(), bar->maximum());
}

void TestRawViewTicks::closingStopsTheTimersAndDeletes()
{
    const QPointer<TzRawViewWindow> view(fixture->view.release());
    QVERIFY(view->close());
    QTRY_VERIFY(view.isNull());
}

void TestRawViewTicks::stoppedTimersMoveNothing()
{
    fixture->view->setTimersStopped(true);
    fixture->deliver({fixture->rx(1)});
    QSignalSpy visible(fixture->view.get(), &TzVciBaseViewWindow::sigUpdateVisibleRow);
    QTest::qWait(100);
    QCOMPARE(fixture->table()->model()->rowCount(), 0);
    fixture->view->setTimersStopped(false);
    QTRY_COMPARE(fixture->table()->model()->rowCount(), 1);
    QTRY_VERIFY(!visible.isEmpty());
}

void TestRawViewTicks::framesMayArriveWhileChannelsChange()
{
    const std::jthread delivering([](const std::stop_token &stop) {
        const std::vector<TzVciMessage> batch{from(0, 0, fixture->rx(1)), from(1, 1, fixture->rx(2))};
        while (!stop.stop_requested()) {
            fixture->view->onReceivedMessages(batch);
            std::this_thread::yield();
        }
    });
    for (int round = 0; round < 20; ++round) {
        fixture->view->onUpdateFilters({{static_cast<std::uint8_t>(round % 2), {0, 1}}});
        fixture->button("buttonPause")->click();
        fixture->tickData();
        fixture->button("buttonPause")->click();
        fixture->tickUi();
        fixture->view->onClearViewWindow(fixture->view->viewKind());
    }
    QVERIFY(waitFor([] { return fixture->table()->model()->rowCount() > 0; }));
}
