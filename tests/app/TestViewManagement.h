// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

/// The list of views, their tiling, and what channels that open and close do to them.
class TestViewManagement : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    // numbers and tiling
    void aFifthNewCanViewShowsTheWarningAndNothingChanges();
    void closingTheSecondOfThreeViewsGivesTheThirdTheNumberTwoAndTwoRows();
    void titlesOfAllKinds();
    void resizingTilesAgain();
    void resizingKeepsWhatTheUserMoved();
    void resetViewTilesAgain();
    void tilingLeavesTheWindowTitleAlone();
    void closeViewClosesAllViews();
    void aViewThatClosesByItselfLeavesListAndArea();
    void aViewThatRefusesToCloseStays();
    void aViewDestroyedWithoutClosingIsTakenOut();
    void aViewThatWasNeverListedShowsTheWarning();
    // channels
    void openingACanChannelWithOnlyALinViewOpensACanView();
    void openingACanChannelWithADbcViewOpensNone();
    void decodedViewsCountForTheirFamily();
    void openingALinChannelOpensALinView();
    void atTheLimitAnAutomaticViewIsOneInfoLine();
    void theFirstCanChannelEmptiesTheViewsAndTheSecondDoesNot();
    void closingTheLastCanChannelOfOneDeviceLeavesTheTimerOfAnotherRunning();
    void closingTheLastChannelStopsTheTimer();
    // frames
    void framesReachEveryViewOfTheirFamily();
    void clearButtonOfAViewReachesThatViewAlone();
    void clearSignalOfADecodedKindReachesItsFamily();
    void viewsMayCloseWhileFramesFlow();
    void viewsMayBeDestroyedUnclosedWhileFramesFlow();
};
