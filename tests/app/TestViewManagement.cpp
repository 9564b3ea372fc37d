// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/TestViewManagement.h"

#include "tests/app/AppFixture.h"
#include "tests/app/PlainView.h"
#include "tests/support/MessageBoxDriver.h"
#include "tests/support/WaitFor.h"

#include <QCloseEvent>
#include <QMessageBox>
#include <QPointer>
#include <QtTest>

namespace {

using Titles = std::vector<QString>;

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

QRect wholeArea(tztest::AppFixture &fixture)
{
    return {QPoint(0, 0), fixture.area().viewport()->size()};
}

} // namespace

void TestViewManagement::aFifthNewCanViewShowsTheWarningAndNothingChanges()
{
    tztest::AppFixture fixture;
    fixture.openViews(3, 1);
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
    fixture.openViews(2, 1);
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
    fixture.openViews(1);
    fixture.window->resize(1200, 700);
    QVERIFY(tztest::waitFor([&] { return fixture.geometries().front() == wholeArea(fixture); }));
    fixture.openViews(1);
    fixture.window->resize(900, 900);
    QVERIFY(tztest::waitFor([&] {
        const QRect all = wholeArea(fixture);
        return fixture.geometries().back() == QRect(0, all.height() / 2, all.width(), all.height() / 2);
    }));
}

void TestViewManagement::resizingKeepsWhatTheUserMoved()
{
    tztest::AppFixture fixture;
    fixture.openViews(2);
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
    fixture.openViews(2);
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
    fixture.openViews(1);
    QCOMPARE(fixture.window->windowTitle(), QStringLiteral("   Zarvelo Bench"));
    QVERIFY(!fixture.area().subWindowList().front()->isMaximized());
    QCOMPARE(fixture.geometries().front(), wholeArea(fixture));
}

void TestViewManagement::closeViewClosesAllViews()
{
    tztest::AppFixture fixture;
    fixture.openViews(2, 2);
    tztest::MessageBoxDriver driver;
    fixture.action("actionClose_View").trigger();
    QVERIFY(fixture.titles().empty());
    QVERIFY(fixture.area().subWindowList().isEmpty());
    QCOMPARE(driver.seen().size(), std::size_t{0});
    fixture.openViews(1); // numbers begin anew
    QCOMPARE(fixture.titles(), (Titles{"View1 For CAN"}));
}

void TestViewManagement::aViewThatClosesByItselfLeavesListAndArea()
{
    tztest::AppFixture fixture;
    fixture.openViews(2);
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
    fixture.openViews(2);
    Refusal refusal;
    fixture.helper().views().views().front()->installEventFilter(&refusal);
    fixture.action("actionClose_View").trigger();
    QCOMPARE(fixture.titles(), (Titles{"View1 For CAN"}));
    QCOMPARE(fixture.area().subWindowList().size(), 1);
}

void TestViewManagement::aViewDestroyedWithoutClosingIsTakenOut()
{
    tztest::AppFixture fixture;
    fixture.openViews(2);
    tztest::MessageBoxDriver driver;
    delete fixture.area().subWindowList().front();
    QCOMPARE(fixture.titles(), (Titles{"View1 For CAN"}));
    QCOMPARE(fixture.geometries(), (std::vector<QRect>{wholeArea(fixture)}));
    QCOMPARE(driver.seen().size(), std::size_t{0});
}

void TestViewManagement::aViewThatWasNeverListedShowsTheWarning()
{
    tztest::AppFixture fixture;
    fixture.openViews(1);
    tztest::PlainView stranger(TzVciViewKind::can);
    tztest::MessageBoxDriver driver;
    driver.expectBox(QMessageBox::Ok);
    fixture.helper().onCloseViewWindow(&stranger);
    QVERIFY(driver.allMet());
    QCOMPARE(driver.seen().front().title, QStringLiteral("Warnning"));
    QCOMPARE(driver.seen().front().text,
             QStringLiteral("System exception: The current window handle is not recognized"));
    QCOMPARE(fixture.titles().size(), std::size_t{1});
}
