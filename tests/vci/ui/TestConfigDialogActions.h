// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/vci/ui/ConfigDialogTest.h"

/// What the user does with the device settings dialog where no box answers: addresses, buttons, keys, closing.
class TestConfigDialogActions : public ConfigDialogTest
{
    Q_OBJECT
private Q_SLOTS:
    void localIpIsStoredTrimmedOnEditingFinished();
    void localIpIsStoredTrimmedBeforeStart();
    void enterInTheLocalIpStartsNothing();
    void startWithoutABoxShowsAnErrorAndUnchecks();
    void channelOfAClosedDeviceShowsTheCode();
    void closingSavesTheSettings();
    void quittingUnderTheDialogSavesTheSettings();
    void quittingUnderTheOpenErrorSavesTheSettings();
    void slotsWithoutAClickDoNothing();
    void enterClicksTheFocusedButton();
    void tabScrollsToTheControl();
};
