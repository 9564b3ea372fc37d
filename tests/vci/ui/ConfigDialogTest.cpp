// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/vci/ui/ConfigDialogTest.h"

#include "common/ui/WorkbenchStyle.h"

#include <QApplication>

void ConfigDialogTest::initTestCase()
{
    Common::applyWorkbenchStyle(*qApp);
}

void ConfigDialogTest::init()
{
    m_workDir = std::make_unique<tztest::TempWorkDir>();
    m_store = std::make_unique<TzVciDeviceStore>();
    m_scanner = std::make_unique<TzVciDeviceScanner>(m_store.get());
    m_manager = std::make_unique<TzVciDeviceManager>(m_store.get());
}

void ConfigDialogTest::cleanup()
{
    m_manager.reset();
    m_scanner.reset();
    m_store.reset();
    m_workDir.reset();
}

std::unique_ptr<TzVciConfigDialog> ConfigDialogTest::makeDialog()
{
    auto dialog = std::make_unique<TzVciConfigDialog>(m_manager.get(), m_store.get(), m_scanner.get());
    dialog->show();
    return dialog;
}
