// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

/// Each test runs on a CAN and on a LIN view.
class TestRawViewWindow : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void toolRowHasItsTexts_data() { twins(); }
    void toolRowHasItsTexts();
    void tableIsSetUp_data() { twins(); }
    void tableIsSetUp();
    void recordingAndSavingAreNotOfferedYet_data() { twins(); }
    void recordingAndSavingAreNotOfferedYet();
    void framesAppearAndAreCounted_data() { twins(); }
    void framesAppearAndAreCounted();
    void displayFilterTouchesNoCounter_data() { twins(); }
    void displayFilterTouchesNoCounter();
    void pausingLosesFramesAndStopsTheTicks_data() { twins(); }
    void pausingLosesFramesAndStopsTheTicks();
    void pauseButtonFollowsTheState_data() { twins(); }
    void pauseButtonFollowsTheState();
    void pauseButtonKeepsItsWidth_data() { twins(); }
    void pauseButtonKeepsItsWidth();
    void foldBoxFolds_data() { twins(); }
    void foldBoxFolds();
    void filterButtonTogglesTheBar_data() { twins(); }
    void filterButtonTogglesTheBar();
    void hiddenBarKeepsItsContents_data() { twins(); }
    void hiddenBarKeepsItsContents();
    void clearOfAnEmptyViewDoesNotAsk_data() { twins(); }
    void clearOfAnEmptyViewDoesNotAsk();
    void clearAsksAndKeepsOnNo_data() { twins(); }
    void clearAsksAndKeepsOnNo();
    void clearAsksAndEmptiesOnYes_data() { twins(); }
    void clearAsksAndEmptiesOnYes();
    void clearReachesTheFamilyAlone_data() { twins(); }
    void clearReachesTheFamilyAlone();
    void devicesDialogChangesTheChannels_data() { twins(); }
    void devicesDialogChangesTheChannels();
    void cancelledDevicesDialogEndsAnEarlierPause_data() { twins(); }
    void cancelledDevicesDialogEndsAnEarlierPause();
    void viewMayGoUnderItsOwnDialogs_data() { twins(); }
    void viewMayGoUnderItsOwnDialogs();
    void contextMenuHasItsEntries_data() { twins(); }
    void contextMenuHasItsEntries();
    void contextMenuActsLikeTheButtons_data() { twins(); }
    void contextMenuActsLikeTheButtons();

private:
    static void twins();
};
