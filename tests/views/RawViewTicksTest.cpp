// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/views/RawViewTicksTest.h"

#include "tests/support/WaitFor.h"
#include "tests/views/RawViewWindowFixture.h"

#include <QCloseEvent>
#include <QRegularExpression>
#include <QScrollBar>
#include <QTimer>

#include <stop_token>
#include <thread>

using namespace tztest;

namespace {

/// Records what a view does when it is told to close.
class ClosingView : public TzVciBaseViewWindow
{
public:
    explicit ClosingView(std::uint8_t kind)
        : TzVciBaseViewWindow(nullptr, kind, nullptr)
    {
    }
    void close(QCloseEvent &event)
    {
        m_event = &event;
        closeEvent(&event);
        m_event = nullptr;
    }
    const QStringList &calls() const { return m_calls; }

    void setTimersStopped(bool stopped) override
    {
        note(stopped ? QStringLiteral("setTimersStopped(true)") : QStringLiteral("setTimersStopped(false)"));
    }
    void stopRecording() override { note(QStringLiteral("stopRecording")); }
    void onReceivedMessages(const std::vector<TzVciMessage> &) override {}
    void onUpdateData() override {}
    void onUpdateUi() override {}

private:
    void note(const QString &call)
    {
        m_calls << (m_event && !m_event->isAccepted() ? call : call + QStringLiteral(" after the event was accepted"));
    }

    const QCloseEvent *m_event = nullptr;
    QStringList m_calls;
};

class PaintCounter : public QObject
{
public:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        m_count += event->type() == QEvent::Paint ? 1 : 0;
        return QObject::eventFilter(watched, event);
    }
    int count() const { return m_count; }

private:
    int m_count = 0;
};

} // namespace

void TestRawViewTicks::visibleRowsFollowTheScrollBar()
{
    fixture->deliver(std::vector<TzVciMessage>(500, fixture->rx(1)));
    fixture->tickData();
    QScrollBar *bar = fixture->table()->verticalScrollBar();
    QTRY_VERIFY(bar->maximum() > 0);
    bar->setValue(0); // a tick may have followed the new rows
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

void TestRawViewTicks::resizingKeepsFollowing()
{
    QScrollBar *bar = fixture->table()->verticalScrollBar();
    const int height = fixture->view->height();
    const auto showMore = [](int expectedRows) {
        fixture->deliver(std::vector<TzVciMessage>(500, fixture->rx(1)));
        fixture->tickData();
        fixture->tickUi();
        QTRY_COMPARE(fixture->table()->model()->rowCount(), expectedRows);
    };
    showMore(500);
    QTRY_VERIFY(bar->maximum() > 0 && bar->value() == bar->maximum());
    const int maximum = bar->maximum();
    fixture->view->resize(fixture->view->width(), height / 2); // the bar stays, its end moves on
    QTRY_VERIFY(bar->maximum() > maximum);
    showMore(1000);
    QTRY_COMPARE(bar->value(), bar->maximum());
    bar->setValue(0); // the user goes back: neither a tick nor a resize takes the rows away
    fixture->view->resize(fixture->view->width(), height);
    showMore(1500);
    QTRY_VERIFY(bar->maximum() > maximum + 500);
    QCOMPARE(bar->value(), 0);
}

void TestRawViewTicks::timesAreShownAnewInAPausedView()
{
    QAbstractItemModel *model = fixture->table()->model();
    QSignalSpy changes(model, &QAbstractItemModel::dataChanged);
    fixture->view->onTimesChanged();
    QVERIFY2(changes.isEmpty(), "there is no row");
    fixture->deliver(std::vector<TzVciMessage>(3, at(15'000'000, fixture->rx(1))));
    fixture->tickData();
    fixture->button("buttonPause")->click();
    QVERIFY(fixture->view->isPaused());
    QCoreApplication::processEvents();
    changes.clear();
    PaintCounter paints;
    fixture->table()->viewport()->installEventFilter(&paints);
    fixture->manager.timeManager().setTimeScaleFactor(1.0);
    fixture->tickUi();
    QVERIFY2(changes.isEmpty(), "no tick does it");
    fixture->view->onTimesChanged();
    QCOMPARE(changes.count(), 1);
    QCOMPARE(changes[0][0].toModelIndex(), model->index(0, TzRawViewFamily::TimeColumn));
    QCOMPARE(changes[0][1].toModelIndex(), model->index(2, TzRawViewFamily::TimeColumn));
    QTRY_VERIFY(paints.count() > 0);
    QVERIFY(!model->index(0, TzRawViewFamily::TimeColumn).data().toString().contains(QLatin1Char('.')));
}

void TestRawViewTicks::timersTickAt20And500Milliseconds()
{
    const std::pair<const char *, int> wanted[] = {{"dataTimer", 20}, {"uiTimer", 500}};
    for (const auto &[name, interval] : wanted) {
        const auto *timer = fixture->view->findChild<QTimer *>(QLatin1String(name), Qt::FindDirectChildrenOnly);
        QVERIFY2(timer, name);
        QCOMPARE(timer->interval(), interval);
        QVERIFY(timer->isActive());
        QVERIFY(!timer->isSingleShot());
        fixture->view->setTimersStopped(true);
        QVERIFY(!timer->isActive());
        fixture->view->setTimersStopped(false);
        QVERIFY(timer->isActive());
        QCOMPARE(timer->interval(), interval);
    }
}

void TestRawViewTicks::closingEndsTheRecordingThenTheTimers()
{
    ClosingView view(fixture->view->viewKind());
    QCloseEvent event;
    event.ignore();
    view.close(event);
    QCOMPARE(view.calls(), (QStringList{"stopRecording", "setTimersStopped(true)"}));
    QVERIFY(event.isAccepted());
}

void TestRawViewTicks::closingStopsTheTimersAndDeletes()
{
    const QPointer<TzRawViewWindow> view(fixture->view.release());
    const auto timers = view->findChildren<QTimer *>(QRegularExpression(QStringLiteral("^(data|ui)Timer$")));
    QCOMPARE(timers.size(), 2);
    QVERIFY(view->close());
    for (const QTimer *timer : timers)
        QVERIFY(!timer->isActive()); // the window lives until the event loop turns
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
