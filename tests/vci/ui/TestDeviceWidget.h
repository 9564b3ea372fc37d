// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "vci/TzVciDeviceScanner.h"
#include "vci/TzVciDeviceStore.h"

#include <QObject>

#include <memory>

class TestDeviceWidget : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void showsTitleButtonsAndToolTips();
    void listsDevicesWithLampAndToolTip();
    void followsTheStoreWhenAnotherThreadAddsADevice();
    void keepsTheSelectionWhenADeviceIsAdded();
    void reportsTheSelectedDevice();
    void scanSelectsTheFoundDevice();
    void scanWithoutResultSaysSoAndKeepsPainting();
    void scanGivesTheFocusBack();
    void tabGoesFromScanOverAddToTheList();
    void scanOutlivesTheWidget();
    void scanEndsWhenTheProgramQuits();
    void scanEndsWhenTheProgramHasQuitBefore();
    void addPresetsTheLowestFreeIndexAndEightChannels();
    void addMakesADevice();
    void addRefusesAnIndexThatExists();
    void addCancelledAddsNothing();

private:
    std::unique_ptr<TzVciDeviceStore> m_store;
    std::unique_ptr<TzVciDeviceScanner> m_scanner;
};
