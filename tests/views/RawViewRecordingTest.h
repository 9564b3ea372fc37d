// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/views/RawViewTwinTest.h"

/// What a raw view hands to its recorder, and how a recording ends with it.
class TestRawViewRecording : public RawViewTwinTest
{
    Q_OBJECT
private Q_SLOTS:
    void buttonShowsTheHiddenWindow();
    void buttonRestoresAMinimisedWindow();
    void framesThatEnterAreRecorded();
    void channelsNotChosenAreNotRecorded();
    void displayFilterDoesNotTouchTheRecording();
    void pausingLosesFramesForTheRecording();
    void clearingTheViewDoesNotTouchTheRecording();
    void closingTheRecorderWindowEndsTheRecordingOnly();
    void closingTheViewEndsItsFile();
    void destroyingTheViewEndsItsFile();
    void viewMayGoUnderTheRecordersQuestion();
};
