// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/views/RawViewTwinTest.h"

/// The tool row of a raw view, its table, its counters and its filter bar.
class TestRawViewWindow : public RawViewTwinTest
{
    Q_OBJECT
private Q_SLOTS:
    void toolRowHasItsTexts();
    void tableIsSetUp();
    void recordingAndSavingAreOffered();
    void framesAppearAndAreCounted();
    void displayFilterTouchesNoCounter();
    void pausingLosesFramesAndStopsTheTicks();
    void pauseButtonFollowsTheState();
    void pauseButtonKeepsItsWidth();
    void foldBoxFolds();
    void filterButtonTogglesTheBar();
    void hiddenBarKeepsItsContents();
    void clearReachesTheFamilyAlone();
    void contextMenuHasItsEntries();
};
