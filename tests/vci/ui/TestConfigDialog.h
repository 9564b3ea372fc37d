// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/vci/ui/ConfigDialogTest.h"

/// What the device settings dialog shows, and the settings that its cells edit.
class TestConfigDialog : public ConfigDialogTest
{
    Q_OBJECT
private Q_SLOTS:
    void showsTitleTextsAndToolTips();
    void tablesHaveTheirColumns();
    void controlsAreDisabledWithoutADevice();
    void selectingADeviceShowsItsSettings();
    void rowsOfferTypesAndRates();
    void combosWriteIntoTheRecord();
    void theWheelDoesNotChangeACell();
    void fillingAComboNeverWrites();
    void ldfColumnIsAnEmptyCell();
    void configureRunsTheBitTimingDialogOfItsRow();
    void showsADeviceThatIsAddedWhileItIsOpen();
    void fitsTheScreen();
    void openingLoadsTheSettings();
    void statesFollowTheStore();
};
