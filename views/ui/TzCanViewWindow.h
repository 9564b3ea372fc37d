// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "views/ui/TzRawViewWindow.h"

/// The raw view of CAN traffic.
class TzCanViewWindow final : public TzRawViewWindow
{
    Q_OBJECT
public:
    /// The pointers must outlive the view.
    TzCanViewWindow(TzVciDeviceManager *deviceManager, TzVciDeviceStore *deviceStore, QWidget *parent = nullptr);
    ~TzCanViewWindow() override;

private:
    static constexpr ColumnWidth columnWidths[] = {{0, 90}, {1, 120}, {2, 50}, {3, 60}, {4, 80},
                                                   {6, 50}, {7, 80},  {8, 80}, {9, 80}, {10, 60}};
};
