// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/support/TempWorkDir.h"
#include "vci/TzVciDeviceManager.h"
#include "vci/TzVciDeviceScanner.h"
#include "vci/TzVciDeviceStore.h"
#include "vci/ui/TzVciConfigDialog.h"

#include <QObject>

#include <memory>

/// What each test of the device settings dialog starts from: a store without devices, and no box that would answer.
class ConfigDialogTest : public QObject
{
    Q_OBJECT
private Q_SLOTS: // the test library finds them in the derived classes, too
    void initTestCase();
    void init();
    void cleanup();

protected:
    std::unique_ptr<TzVciConfigDialog> makeDialog();

    std::unique_ptr<tztest::TempWorkDir> m_workDir;
    std::unique_ptr<TzVciDeviceStore> m_store;
    std::unique_ptr<TzVciDeviceScanner> m_scanner;
    std::unique_ptr<TzVciDeviceManager> m_manager;
};
