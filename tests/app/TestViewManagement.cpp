// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/TestViewManagement.h"

#include "tests/app/AppFixture.h"
#include "tests/support/LogCapture.h"
#include "tests/support/MessageBoxDriver.h"
#include "views/ui/TzVciBaseViewWindow.h"

#include <QAbstractButton>
#include <QCloseEvent>
#include <QMessageBox>
#include <QPointer>
#include <QSignalSpy>
#include <QTableView>
#include <QtTest>

#include <atomic>

namespace {

using Titles = std::vector<QString>;
constexpr auto byUser = TzBenchWindowHelper::Request::ByUser;
constexpr std::uint8_t can = TzVciProtocolId::can;
constexpr std::uint8_t lin = TzVciProtocolId::lin;

/// A view of any kind without a table.
class PlainView : public TzVciBaseViewWindow
{
public:
    explicit PlainView(std::uint8_t kind)
        : TzVciBaseViewWindow(nullptr, kind, nullptr)
    {
    }
    ~PlainView() override { leaveDelivery(); }
    void onReceivedMessages(const std::vector<TzVciMessage> &messages) override { m_received += messages.size(); }
    void onUpdateData() override {}
    void onUpdateUi() override {}
    std::size_t received() const { return m_received.load(); }

private:
    std::atomic<std::size_t> m_received{0};
};

/// Makes a window refuse to close while it lives.
class Refusal : public QObject
{
public:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() != QEvent::Close)
            return false;
        event->ignore();
        return true;
    }
};

void openViews(tztest::AppFixture &fixture, int canViews, int linViews = 0)
{
    for (int i = 0; i < canViews; ++i)
        fixture.helper().newView(TzVciViewKind::can, byUser);
    for (int i = 0; i < linViews; ++i)
        fixture.helper().newView(TzVciViewKind::lin, byUser);
}

QRect wholeArea(tztest::AppFixture &fixture)
{
    return {QPoint(0, 0), fixture.area().viewport()->size()};
}

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

void TestViewManagement::aFifthNewCanViewShowsTheWarningAndNothingChanges()
{
    tztest::AppFixture fixture;
    openViews(fixture, 3, 1);
    const Titles titles = fixture.titles();
    const auto geometries = fixture.geometries();
    tztest::MessageBoxDriver driver;
    driver.expectBox(QMessageBox::Ok);
    fixture.action("actionNew_CAN_View").trigger();
    QVERIFY(driver.allMet());
    QCOMPARE(driver.seen().front().title, QStringLiteral("Warnning"));
    QCOMPARE(driver.seen().front().text, QStringLiteral("The view is full, please close other views and then open them "
                                                        "again. (CAN/LIN total does not exceed 4 views)"));
    QCOMPARE(driver.seen().front().icon, static_cast<int>(QMessageBox::Warning));
    QCOMPARE(fixture.titles(), titles);
    QCOMPARE(fixture.geometries(), geometries);
}

void TestViewManagement::closingTheSecondOfThreeViewsGivesTheThirdTheNumberTwoAndTwoRows()
{
    tztest::AppFixture fixture;
    openViews(fixture, 2, 1);
    const auto subWindows = fixture.area().subWindowList();
    subWindows.at(1)->close();
    QCOMPARE(fixture.titles(), (Titles{"View1 For CAN", "View2 For LIN"}));
    const QRect all = wholeArea(fixture);
    QCOMPARE(fixture.geometries(), (std::vector<QRect>{{0, 0, all.width(), all.height() / 2},
                                                       {0, all.height() / 2, all.width(), all.height() / 2}}));
}

void TestViewManagement::titlesOfAllKinds()
{
    QCOMPARE(TzViewList::title(1, TzVciViewKind::can), QStringLiteral("View1 For CAN"));
    QCOMPARE(TzViewList::title(2, TzVciViewKind::lin), QStringLiteral("View2 For LIN"));
    QCOMPARE(TzViewList::title(3, TzVciViewKind::dbc), QStringLiteral("View3 For DBC"));
    QCOMPARE(TzViewList::title(4, TzVciViewKind::ldf), QStringLiteral("View4 For LDF"));
    QCOMPARE(TzViewList::title(1, 99), QStringLiteral("View1"));
}

void TestViewManagement::resizingTilesAgain()
{
    tztest::AppFixture fixture;
    openViews(fixture, 1);
    fixture.window->resize(1200, 700);
    QVERIFY(tztest::waitFor([&] { return fixture.geometries().front() == wholeArea(fixture); }));
    openViews(fixture, 1);
    fixture.window->resize(900, 900);
    QVERIFY(tztest::waitFor([&] {
        const QRect all = wholeArea(fixture);
        return fixture.geometries().back() == QRect(0, all.height() / 2, all.width(), all.height() / 2);
    }));
}

void TestViewManagement::resizingKeepsWhatTheUserMoved()
{
    tztest::AppFixture fixture;
    openViews(fixture, 2);
    const QRect moved(20, 30, 400, 200);
    const auto subWindows = fixture.area().subWindowList();
    subWindows.at(0)->setGeometry(moved);
    const QRect other = subWindows.at(1)->geometry();
    const QSize before = fixture.area().size();
    fixture.window->resize(1100, 900);
    QVERIFY(tztest::waitFor([&] { return fixture.area().size() != before; }));
    QCOMPARE(fixture.geometries(), (std::vector<QRect>{moved, other}));
}

void TestViewManagement::resetViewTilesAgain()
{
    tztest::AppFixture fixture;
    openViews(fixture, 2);
    const auto tiled = fixture.geometries();
    fixture.area().subWindowList().at(0)->setGeometry(10, 10, 300, 300);
    fixture.area().subWindowList().at(1)->showMaximized();
    fixture.action("actionReset_View").trigger();
    QCOMPARE(fixture.geometries(), tiled);
    fixture.area().subWindowList().at(1)->showMinimized();
    fixture.action("actionReset_View").trigger();
    QCOMPARE(fixture.geometries(), tiled);
}

void TestViewManagement::tilingLeavesTheWindowTitleAlone()
{
    tztest::AppFixture fixture;
    openViews(fixture, 1);
    QCOMPARE(fixture.window->windowTitle(), QStringLiteral("   Zarvelo Bench"));
    QVERIFY(!fixture.area().subWindowList().front()->isMaximized());
    QCOMPARE(fixture.geometries().front(), wholeArea(fixture));
}

void TestViewManagement::closeViewClosesAllViews()
{
    tztest::AppFixture fixture;
    openViews(fixture, 2, 2);
    tztest::MessageBoxDriver driver;
    fixture.action("actionClose_View").trigger();
    QVERIFY(fixture.titles().empty());
    QVERIFY(fixture.area().subWindowList().isEmpty());
    QCOMPARE(driver.seen().size(), std::size_t{0});
    openViews(fixture, 1); // numbers begin anew
    QCOMPARE(fixture.titles(), (Titles{"View1 For CAN"}));
}

void TestViewManagement::aViewThatClosesByItselfLeavesListAndArea()
{
    tztest::AppFixture fixture;
    openViews(fixture, 2);
    const QPointer<TzVciBaseViewWindow> view = fixture.helper().views().views().front();
    view->close();
    QCOMPARE(fixture.titles(), (Titles{"View1 For CAN"}));
    QTRY_VERIFY(!view); // which also runs deferred deletions
    QTRY_COMPARE(fixture.area().subWindowList().size(), 1);
    QCOMPARE(fixture.geometries().front(), wholeArea(fixture));
}

void TestViewManagement::aViewThatRefusesToCloseStays()
{
    tztest::AppFixture fixture;
    openViews(fixture, 2);
    Refusal refusal;
    fixture.helper().views().views().front()->installEventFilter(&refusal);
    fixture.action("actionClose_View").trigger();
    QCOMPARE(fixture.titles(), (Titles{"View1 For CAN"}));
    QCOMPARE(fixture.area().subWindowList().size(), 1);
}

void TestViewManagement::aViewDestroyedWithoutClosingIsTakenOut()
{
    tztest::AppFixture fixture;
    openViews(fixture, 2);
    tztest::MessageBoxDriver driver;
    delete fixture.area().subWindowList().front();
    QCOMPARE(fixture.titles(), (Titles{"View1 For CAN"}));
    QCOMPARE(fixture.geometries(), (std::vector<QRect>{wholeArea(fixture)}));
    QCOMPARE(driver.seen().size(), std::size_t{0});
}

void TestViewManagement::aViewThatWasNeverListedShowsTheWarning()
{
    tztest::AppFixture fixture;
    openViews(fixture, 1);
    PlainView stranger(TzVciViewKind::can);
    tztest::MessageBoxDriver driver;
    driver.expectBox(QMessageBox::Ok);
    fixture.helper().onCloseViewWindow(&stranger);
    QVERIFY(driver.allMet());
    QCOMPARE(driver.seen().front().title, QStringLiteral("Warnning"));
    QCOMPARE(driver.seen().front().text,
             QStringLiteral("System exception: The current window handle is not recognized"));
    QCOMPARE(fixture.titles().size(), std::size_t{1});
}

void TestViewManagement::openingACanChannelWithOnlyALinViewOpensACanView()
{
    tztest::AppFixture fixture(1);
    openViews(fixture, 0, 1);
    QVERIFY(fixture.openAll(0, can, 0));
    QCOMPARE(fixture.titles(), (Titles{"View1 For LIN", "View2 For CAN"}));
    QVERIFY(fixture.openChannel(0, can, 1)); // there is one now
    QSignalSpy status(&fixture.helper(), &TzBenchWindowHelper::sigVciStatusChanged);
    QVERIFY(tztest::waitFor([&] { return status.count() > 0; }));
    QCOMPARE(fixture.titles().size(), std::size_t{2});
}

void TestViewManagement::openingACanChannelWithADbcViewOpensNone()
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

void TestViewManagement::decodedViewsCountForTheirFamily()
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

void TestViewManagement::openingALinChannelOpensALinView()
{
    tztest::AppFixture fixture(1);
    QVERIFY(fixture.openAll(0, lin, 0));
    QCOMPARE(fixture.titles(), (Titles{"View1 For LIN"}));
    QVERIFY(!fixture.helper().isDraining(can));
}

void TestViewManagement::atTheLimitAnAutomaticViewIsOneInfoLine()
{
    const tztest::LogCapture log;
    tztest::AppFixture fixture(1);
    openViews(fixture, 4);
    tztest::MessageBoxDriver driver;
    QVERIFY(fixture.openDevice(0));
    QVERIFY(fixture.openChannel(0, lin, 0));
    QVERIFY(tztest::waitFor([&] { return fixture.helper().isDraining(lin); }));
    QCOMPARE(log.count(1, "No view of kind 5 is opened by itself: 4 views are open already"), std::size_t{1});
    QCOMPARE(fixture.titles().size(), std::size_t{4});
    QCOMPARE(driver.seen().size(), std::size_t{0});
}

void TestViewManagement::theFirstCanChannelEmptiesTheViewsAndTheSecondDoesNot()
{
    tztest::AppFixture fixture(1);
    openViews(fixture, 1, 1);
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

void TestViewManagement::closingTheLastCanChannelOfOneDeviceLeavesTheTimerOfAnotherRunning()
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

void TestViewManagement::closingTheLastChannelStopsTheTimer()
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

void TestViewManagement::framesReachEveryViewOfTheirFamily()
{
    tztest::AppFixture fixture(1);
    openViews(fixture, 2, 2);
    QVERIFY(fixture.openAll(0, can, 0));
    QVERIFY(fixture.openAll(0, lin, 0));
    for (std::uint32_t id = 0; id < 50; ++id)
        fixture.simulator.box(0).injectCan(0, canFrame(id));
    constexpr std::array<std::uint8_t, 2> data{1, 2};
    fixture.simulator.box(0).injectLin(0, tzsim::LinFrame::make(0x11, data));
    QVERIFY(tztest::waitFor([&] { return fixture.countersOf(0).rx == 50 && fixture.countersOf(1).rx == 50; }));
    QVERIFY(tztest::waitFor([&] { return fixture.countersOf(2).total == 1 && fixture.countersOf(3).total == 1; }));
}

void TestViewManagement::clearButtonOfAViewReachesThatViewAlone()
{
    tztest::AppFixture fixture(1);
    openViews(fixture, 2);
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

void TestViewManagement::clearSignalOfADecodedKindReachesItsFamily()
{
    tztest::AppFixture fixture;
    openViews(fixture, 2, 2);
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

void TestViewManagement::viewsMayCloseWhileFramesFlow()
{
    tztest::AppFixture fixture(1);
    QVERIFY(fixture.openAll(0, can, 0));
    tzsim::LoadSpec load;
    load.framesPerSecond = 20000;
    fixture.simulator.box(0).startLoad(load);
    for (int round = 0; round < 10; ++round) {
        openViews(fixture, 4 - static_cast<int>(fixture.titles().size()));
        QVERIFY(tztest::waitFor([&] { return fixture.countersOf(3).total > 100; }));
        fixture.area().subWindowList().at(round % 4)->close();
        QCoreApplication::processEvents();
    }
    fixture.helper().closeViews();
    QVERIFY(fixture.titles().empty());
}

void TestViewManagement::viewsMayBeDestroyedUnclosedWhileFramesFlow()
{
    tztest::AppFixture fixture(1);
    QVERIFY(fixture.openAll(0, can, 0));
    tzsim::LoadSpec load;
    load.framesPerSecond = 20000;
    fixture.simulator.box(0).startLoad(load);
    tztest::MessageBoxDriver driver;
    for (int round = 0; round < 10; ++round) {
        openViews(fixture, 4 - static_cast<int>(fixture.titles().size()));
        QVERIFY(tztest::waitFor([&] { return fixture.countersOf(3).total > 100; }));
        delete fixture.area().subWindowList().at(round % 4);
        QCOMPARE(fixture.titles(), (Titles{"View1 For CAN", "View2 For CAN", "View3 For CAN"}));
    }
    QVERIFY(fixture.helper().isDraining(can));
    QCOMPARE(driver.seen().size(), std::size_t{0});
}
