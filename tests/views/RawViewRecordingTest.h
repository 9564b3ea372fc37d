// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

/// What a raw view hands to its recorder, and how a recording ends with it. Each test runs on a CAN and on a LIN view.
class TestRawViewRecording : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void buttonShowsTheHiddenWindow_data() { twins(); }
    void buttonShowsTheHiddenWindow();
    void buttonRestoresAMinimisedWindow_data() { twins(); }
    void buttonRestoresAMinimisedWindow();
    void framesThatEnterAreRecorded_data() { twins(); }
    void framesThatEnterAreRecorded();
    void channelsNotChosenAreNotRecorded_data() { twins(); }
    void channelsNotChosenAreNotRecorded();
    void displayFilterDoesNotTouchTheRecording_data() { twins(); }
    void displayFilterDoesNotTouchTheRecording();
    void pausingLosesFramesForTheRecording_data() { twins(); }
    void pausingLosesFramesForTheRecording();
    void clearingTheViewDoesNotTouchTheRecording_data() { twins(); }
    void clearingTheViewDoesNotTouchTheRecording();
    void closingTheRecorderWindowEndsTheRecordingOnly_data() { twins(); }
    void closingTheRecorderWindowEndsTheRecordingOnly();
    void closingTheViewEndsItsFile_data() { twins(); }
    void closingTheViewEndsItsFile();
    void destroyingTheViewEndsItsFile_data() { twins(); }
    void destroyingTheViewEndsItsFile();
    void viewMayGoUnderTheRecordersQuestion_data() { twins(); }
    void viewMayGoUnderTheRecordersQuestion();

private:
    static void twins();
};
