// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

class TestTzVciVersionDialog : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void showsTitleTextsAndDevices();
    void versionShowsTheDateAndTimeOfTheBuild();
    void withoutADeviceNothingCanBeQueried();
    void queryShowsTheFirmwareVersionOfTheChosenDevice();
    void queryOnAClosedDeviceSendsNothing();
    void queryOnADeviceLostByItsLinkSendsNothing();
    void queryWithoutAnAnswerShowsZeroes();
    void checkForUpdatesAsks();
    void helpOpensTheManual();
    void tabOrder();
};
