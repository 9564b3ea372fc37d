// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

class TestTZVciTimeDialog : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void showsTitleTextsAndItems();
    void showsTheModeAndTheFactorOfTheManager();
    void okTakesModeAndFactorOver();
    void everyModeIsTaken_data();
    void everyModeIsTaken();
    void cancelChangesNothing();
    void aFactorSetThroughAnotherPathShowsAsCustomAndIsKept();
    void aFactorWithManyDigitsIsKeptToTheLast();
    void aFactorCloseToAnItemIsCustom();
    void resetAsksAndOnNoDoesNothing();
    void resetOnYesTellsAndSetsTheReference();
    void resetReadsTheTimeOfTheOpenDevicesAlone();
    void withoutAManagerOkAndResetSaySo();
    void tabOrder();
};
