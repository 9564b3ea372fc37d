// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

/// What channels that open and close do to the views, and the way of the frames into them.
class TestViewChannels : public QObject
{
    Q_OBJECT
private Q_SLOTS:
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
