// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

/// The road of the frames between the receive threads and the views.
class TestTzFrameDrain : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void stoppedQueueKeepsAtMost20000FramesAndWarnsOnce();
    void aBatchAcrossTheLimitIsKeptInPart();
    void theNextStandstillWarnsAgain();
    void drainedQueueGrowsAsItNeedsTo();
    void aTakeYieldsAtMost2000Frames();
    void canTickEndsOnlyWhenTheQueueIsEmptyAndWarnsOfFullBatches();
    void linTickTakesOneBatch();
    void framesKeptWhileStoppedAreDeliveredAtTheNextStart();
    void stopDrainsToEmpty();
    void stopEndsWhileFramesKeepComing();
    void manyProducersLoseNothingAndKeepTheirOrder();
    void aClosedInletDoesNothing();
    void closeWaitsForAStatusReport();
};
