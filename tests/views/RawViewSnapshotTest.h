// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

/// Copying and saving from a raw view's buttons, context menu and keys. Each test runs on a CAN and on a LIN view.
class TestRawViewSnapshot : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void saveOffersAscInACanViewAlone_data() { twins(); }
    void saveOffersAscInACanViewAlone();
    void pausedViewHoldsStillWhileItIsSaved_data() { twins(); }
    void pausedViewHoldsStillWhileItIsSaved();
    void savePausesFromTheClickOn_data() { twins(); }
    void savePausesFromTheClickOn();
    void saveKeepsAnEarlierPause_data() { twins(); }
    void saveKeepsAnEarlierPause();
    void failedSaveGoesOnAsBefore_data() { twins(); }
    void failedSaveGoesOnAsBefore();
    void secondClickAsksNothing_data() { twins(); }
    void secondClickAsksNothing();
    void viewMayGoUnderTheSaveDialog_data() { twins(); }
    void viewMayGoUnderTheSaveDialog();
    void copyEntriesTakeTheClickedRow_data() { twins(); }
    void copyEntriesTakeTheClickedRow();
    void copyEntriesNeedSomethingToCopy_data() { twins(); }
    void copyEntriesNeedSomethingToCopy();
    void clickedRowMayGoUnderTheMenu_data() { twins(); }
    void clickedRowMayGoUnderTheMenu();
    void copyEntriesTakeTheClickedFrameOfAMovingView_data() { twins(); }
    void copyEntriesTakeTheClickedFrameOfAMovingView();
    void everyCopyKeyTakesTheSelectedRows_data() { twins(); }
    void everyCopyKeyTakesTheSelectedRows();

private:
    static void twins();
};
