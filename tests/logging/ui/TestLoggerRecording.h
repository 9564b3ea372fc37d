// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/logging/ui/LoggerTwinTest.h"

/// Recording from the recorder windows.
class TestLoggerRecording : public LoggerTwinTest
{
    Q_OBJECT
private Q_SLOTS:
    void emptyPathWarns();
    void unopenableFileIsTold();
    void unwritableHeaderIsTold();
    void otherFailureIsToldWithItsCode();
    void fileOfAnotherRecordingIsRefused();
    void secondStartIsRefused();
    void startAndStopShowTheState();
    void framesAreTakenOnlyWhileRecording();
    void settingsReachTheFile();
    void sizeLimitZeroIsOneMebibyte();
    void errorFramesMayBeLeftOut();
    void relativeTimeGivesTheDeltas();
    void pathMayHoldAnyCharacters();
    void closingWhileRecordingAsksAndGoesOnOnNo();
    void closingWhileRecordingStopsAndHidesOnYes();
    void destroyedWindowEndsItsFile();
    void framesMayArriveWhileRecordingStartsAndStops();
};
