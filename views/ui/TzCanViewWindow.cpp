// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/ui/TzCanViewWindow.h"

#include "logging/ui/CANLoggerWindow.h"
#include "vci/TzVciDeviceManager.h"
#include "views/TzCanViewModel.h"

TzCanViewWindow::TzCanViewWindow(TzVciDeviceManager *deviceManager, TzVciDeviceStore *deviceStore, QWidget *parent)
    : TzRawViewWindow(deviceManager, deviceStore, new TzCanViewModel(deviceManager),
                      new Common::CANLoggerWindow(&deviceManager->timeManager()), columnWidths, parent)
{
}

TzCanViewWindow::~TzCanViewWindow()
{
    leaveDelivery(); // first: frames come in until then
}
