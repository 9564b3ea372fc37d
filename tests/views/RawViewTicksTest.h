// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/views/RawViewTwinTest.h"

/// What a view does on its timers, when it scrolls and when it ends.
class TestRawViewTicks : public RawViewTwinTest
{
    Q_OBJECT
private Q_SLOTS:
    void visibleRowsFollowTheScrollBar();
    void tickTellsVisibleRowsWithoutScrolling();
    void viewAtItsEndFollowsNewRows();
    void resizingKeepsFollowing();
    void timesAreShownAnewInAPausedView();
    void timersTickAt20And500Milliseconds();
    void closingEndsTheRecordingThenTheTimers();
    void closingStopsTheTimersAndDeletes();
    void stoppedTimersMoveNothing();
    void framesMayArriveWhileChannelsChange();
};
