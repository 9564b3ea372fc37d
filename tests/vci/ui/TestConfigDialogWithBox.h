// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/support/TempWorkDir.h"
#include "tools/simulator/Simulator.h"
#include "vci/TzVciDeviceManager.h"
#include "vci/TzVciDeviceScanner.h"
#include "vci/TzVciDeviceStore.h"
#include "vci/ui/TzVciConfigDialog.h"

#include <QObject>

#include <memory>

/// The device settings dialog with a simulated box behind it.
class TestConfigDialogWithBox : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void startOpensTheDeviceAndStopClosesIt();
    void channelButtonsOpenAndCloseTheirChannels();
    void classicCanChannelIgnoresTheSegments();
    void fdChannelIsOpenedWithTheSegmentsOfItsRecord();
    void refusedOpenShowsTheCode();
    void refusedCloseShowsTheCode();
    void boxLostByALinkErrorIsOpenedAgain();

private:
    std::unique_ptr<tztest::TempWorkDir> m_workDir;
    std::unique_ptr<tzsim::Simulator> m_simulator;
    tzsim::Box *m_box = nullptr;
    std::unique_ptr<TzVciDeviceStore> m_store;
    std::unique_ptr<TzVciDeviceScanner> m_scanner;
    std::unique_ptr<TzVciDeviceManager> m_manager;
    std::unique_ptr<TzVciConfigDialog> m_dialog;
};
