// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

/// How the main window opens its tool windows and settings dialogs.
class TestToolWindows : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void busLoadActionShowsOneWindowBesideTheMainWindow();
    void busLoadWindowStaysWhenClosedAndComesBack();
    void busLoadWindowClosesWithTheProgram();
    void actionsRunModalDialogs_data();
    void actionsRunModalDialogs();
    void timeDialogWorksOnTheDevicesOfTheWindow();
    void timeDialogRefreshesPausedViewsOnOkAndOnReset();
    void versionDialogKnowsTheDevicesOfTheWindow();
    void aConversionUnderWayKeepsTheProgramOpen();
    void switchTestOpensItsGuide();
};
