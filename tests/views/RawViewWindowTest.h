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
    void recordingAndSavingAreOffered_data() { twins(); }
    void recordingAndSavingAreOffered();
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
    void clearReachesTheFamilyAlone_data() { twins(); }
    void clearReachesTheFamilyAlone();
    void contextMenuHasItsEntries_data() { twins(); }
    void contextMenuHasItsEntries();

private:
    static void twins();
};
