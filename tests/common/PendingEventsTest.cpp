// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/ui/PendingEvents.h"

#include "tests/support/WaitFor.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTimer>

using Common::handlePendingEvents;

namespace {

/// An order to quit outlives its loop; a loop of the application that ends lifts it.
void liftOrderToQuit()
{
    QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    QCoreApplication::exec();
}

} // namespace

TEST(PendingEvents, HandlesWhatWaitsAndReturns)
{
    int handled = 0;
    for (int i = 0; i < 3; ++i)
        QMetaObject::invokeMethod(
            qApp, [&] { ++handled; }, Qt::QueuedConnection);
    EXPECT_TRUE(handlePendingEvents());
    EXPECT_EQ(handled, 3);
    EXPECT_TRUE(handlePendingEvents()); // does not wait where nothing does
}

TEST(PendingEvents, RunsTimersThatAreDue)
{
    bool fired = false;
    QTimer::singleShot(5, qApp, [&] { fired = true; });
    EXPECT_TRUE(tztest::waitBlocking([&] { return handlePendingEvents() && fired; }));
}

TEST(PendingEvents, MayBeNested)
{
    bool inner = false;
    QMetaObject::invokeMethod(
        qApp, [&] { inner = handlePendingEvents(); }, Qt::QueuedConnection);
    EXPECT_TRUE(handlePendingEvents());
    EXPECT_TRUE(inner);
}

TEST(PendingEvents, TellThatTheProgramIsToEnd)
{
    QMetaObject::invokeMethod(
        qApp, [] { QCoreApplication::quit(); }, Qt::QueuedConnection);
    EXPECT_FALSE(handlePendingEvents());
    EXPECT_FALSE(handlePendingEvents()); // from then on
    liftOrderToQuit();
    EXPECT_TRUE(handlePendingEvents());
}

TEST(PendingEvents, TellOfAnOrderToQuitThatCameBefore)
{
    QCoreApplication::quit();
    EXPECT_FALSE(handlePendingEvents());
    liftOrderToQuit();
    EXPECT_TRUE(handlePendingEvents());
}
