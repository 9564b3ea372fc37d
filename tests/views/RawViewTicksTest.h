// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

/// What a view does on its timers, when it scrolls and when it ends. Each test runs on a CAN and on a LIN view.
class TestRawViewTicks : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void visibleRowsFollowTheScrollBar_data() { twins(); }
    void visibleRowsFollowTheScrollBar();
    void tickTellsVisibleRowsWithoutScrolling_data() { twins(); }
    void tickTellsVisibleRowsWithoutScrolling();
    void viewAtItsEndFollowsNewRows_data() { twins(); }
    void viewAtItsEndFollowsNewRows();
    void resizingKeepsFollowing_data() { twins(); }
    void resizingKeepsFollowing();
    void timesAreShownAnewInAPausedView_data() { twins(); }
    void timesAreShownAnewInAPausedView();
    void timersTickAt20And500Milliseconds_data() { twins(); }
    void timersTickAt20And500Milliseconds();
    void closingEndsTheRecordingThenTheTimers_data() { twins(); }
    void closingEndsTheRecordingThenTheTimers();
    void closingStopsTheTimersAndDeletes_data() { twins(); }
    void closingStopsTheTimersAndDeletes();
    void stoppedTimersMoveNothing_data() { twins(); }
    void stoppedTimersMoveNothing();
    void framesMayArriveWhileChannelsChange_data() { twins(); }
    void framesMayArriveWhileChannelsChange();

private:
    static void twins();
};
