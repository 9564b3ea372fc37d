// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/support/TempWorkDir.h"
#include "vci/TzVciDeviceManager.h"
#include "vci/TzVciDeviceScanner.h"
#include "vci/TzVciDeviceStore.h"
#include "vci/ui/TzVciConfigDialog.h"

#include <QObject>

#include <memory>

/// The device settings dialog where no box answers.
class TestConfigDialog : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
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
    void localIpIsStoredTrimmedOnEditingFinished();
    void localIpIsStoredTrimmedBeforeStart();
    void enterInTheLocalIpStartsNothing();
    void startWithoutABoxShowsAnErrorAndUnchecks();
    void channelOfAClosedDeviceShowsTheCode();
    void showsADeviceThatIsAddedWhileItIsOpen();
    void closingSavesTheSettings();
    void quittingUnderTheDialogSavesTheSettings();
    void quittingUnderTheOpenErrorSavesTheSettings();
    void slotsWithoutAClickDoNothing();
    void enterClicksTheFocusedButton();
    void tabScrollsToTheControl();
    void fitsTheScreen();
    void openingLoadsTheSettings();
    void statesFollowTheStore();

private:
    std::unique_ptr<TzVciConfigDialog> makeDialog();

    std::unique_ptr<tztest::TempWorkDir> m_workDir;
    std::unique_ptr<TzVciDeviceStore> m_store;
    std::unique_ptr<TzVciDeviceScanner> m_scanner;
    std::unique_ptr<TzVciDeviceManager> m_manager;
};
