// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/ui/TzLinViewWindow.h"

#include "logging/ui/LINLoggerWindow.h"
#include "vci/TzVciDeviceManager.h"
#include "views/TzLinViewModel.h"

TzLinViewWindow::TzLinViewWindow(TzVciDeviceManager *deviceManager, TzVciDeviceStore *deviceStore, QWidget *parent)
    : TzRawViewWindow(deviceManager, deviceStore, new TzLinViewModel(deviceManager),
                      new Common::LINLoggerWindow(&deviceManager->timeManager()), columnWidths, parent)
{
}

TzLinViewWindow::~TzLinViewWindow()
{
    leaveDelivery(); // first: frames come in until then
}
