// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

/// Recording from the recorder windows. Each test runs on the CAN and on the LIN window.
class TestLoggerRecording : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void emptyPathWarns_data() { twins(); }
    void emptyPathWarns();
    void unopenableFileIsTold_data() { twins(); }
    void unopenableFileIsTold();
    void unwritableHeaderIsTold_data() { twins(); }
    void unwritableHeaderIsTold();
    void otherFailureIsToldWithItsCode_data() { twins(); }
    void otherFailureIsToldWithItsCode();
    void fileOfAnotherRecordingIsRefused_data() { twins(); }
    void fileOfAnotherRecordingIsRefused();
    void secondStartIsRefused_data() { twins(); }
    void secondStartIsRefused();
    void startAndStopShowTheState_data() { twins(); }
    void startAndStopShowTheState();
    void framesAreTakenOnlyWhileRecording_data() { twins(); }
    void framesAreTakenOnlyWhileRecording();
    void settingsReachTheFile_data() { twins(); }
    void settingsReachTheFile();
    void sizeLimitZeroIsOneMebibyte_data() { twins(); }
    void sizeLimitZeroIsOneMebibyte();
    void errorFramesMayBeLeftOut();
    void relativeTimeGivesTheDeltas();
    void pathMayHoldAnyCharacters_data() { twins(); }
    void pathMayHoldAnyCharacters();
    void closingWhileRecordingAsksAndGoesOnOnNo_data() { twins(); }
    void closingWhileRecordingAsksAndGoesOnOnNo();
    void closingWhileRecordingStopsAndHidesOnYes_data() { twins(); }
    void closingWhileRecordingStopsAndHidesOnYes();
    void destroyedWindowEndsItsFile_data() { twins(); }
    void destroyedWindowEndsItsFile();
    void framesMayArriveWhileRecordingStartsAndStops_data() { twins(); }
    void framesMayArriveWhileRecordingStartsAndStops();

private:
    static void twins();
};
