// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

/// The dialogs that a view shows from its buttons and its context menu. Each test runs on a CAN and on a LIN view.
class TestRawViewDialogs : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void clearOfAnEmptyViewDoesNotAsk_data() { twins(); }
    void clearOfAnEmptyViewDoesNotAsk();
    void clearAsksAndKeepsOnNo_data() { twins(); }
    void clearAsksAndKeepsOnNo();
    void clearAsksAndEmptiesOnYes_data() { twins(); }
    void clearAsksAndEmptiesOnYes();
    void devicesDialogChangesTheChannels_data() { twins(); }
    void devicesDialogChangesTheChannels();
    void cancelledDevicesDialogEndsAnEarlierPause_data() { twins(); }
    void cancelledDevicesDialogEndsAnEarlierPause();
    void secondClickBeforeTheDialogShowsAsksNothing_data() { twins(); }
    void secondClickBeforeTheDialogShowsAsksNothing();
    void viewMayGoUnderADialogOfAButton_data() { twins(); }
    void viewMayGoUnderADialogOfAButton();
    void viewMayGoUnderADialogOfTheContextMenu_data() { twins(); }
    void viewMayGoUnderADialogOfTheContextMenu();
    void viewMayGoBeforeItsDialogShows_data() { twins(); }
    void viewMayGoBeforeItsDialogShows();
    void contextMenuActsLikeTheButtons_data() { twins(); }
    void contextMenuActsLikeTheButtons();

private:
    static void twins();
};
