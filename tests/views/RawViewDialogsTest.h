// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/views/RawViewTwinTest.h"

/// The dialogs that a view shows from its buttons and its context menu.
class TestRawViewDialogs : public RawViewTwinTest
{
    Q_OBJECT
private Q_SLOTS:
    void clearOfAnEmptyViewDoesNotAsk();
    void clearAsksAndKeepsOnNo();
    void clearAsksAndEmptiesOnYes();
    void devicesDialogChangesTheChannels();
    void cancelledDevicesDialogEndsAnEarlierPause();
    void secondClickBeforeTheDialogShowsAsksNothing();
    void viewMayGoUnderADialogOfAButton();
    void viewMayGoUnderADialogOfTheContextMenu();
    void viewMayGoBeforeItsDialogShows();
    void contextMenuActsLikeTheButtons();
};
