// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

/// How the main window ends, and what reaches it afterwards.
class TestClosing : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void noKeepsTheProgramOpen();
    void yesClosesViewsAndDevicesAndStopsTheDrains();
    void toolWindowsCloseBeforeTheDevices();
    void aToolWindowThatRefusesKeepsTheProgramOpen();
    void withoutQuestionARefusalDoesNotCount();
    void withoutQuestionAnOpenDialogEnds();
    void withoutQuestionAnOpenQuestionEnds();
    void anOrderToEndWhileAToolWindowClosesIsTheEnd();
    void toldToEndAQuestionOfAToolWindowReturnsAtOnce();
    void afterClosingCallbacksAndQueuedStatusCallsDoNothing();
    void aDeviceMayOutliveTheWindow();
    void windowDestroyedWithoutClosingLeavesTheDevicesAlone();
    void anEndLimitThatPassesCallsItsFunction();
    void anEndLimitKeptCallsNothing();
};
