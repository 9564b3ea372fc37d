// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

/// The program itself, as a process.
class TestProgram : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void asksForDevicesAtStart();
    void loadsTheDatabasesOfTheLastRunAtStart();
    void aSignalEndsItCleanly_data();
    void aSignalEndsItCleanly();
    void aSignalDuringTheScanEndsItSoon();
    void aChannelOpenedUnderTheDialogIsClosedOnTheBoxAfterASignal();
    void aSignalDuringARecordingLeavesAWholeFile();
    void aSignalDuringAConversionEndsItSoon();
    void aCloseThatHangsEndsInAnAbort();
    void withoutAnInterfaceItStarts();
    void withoutADisplayTheToolkitTellsWhy();
};
