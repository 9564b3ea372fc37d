// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "views/ui/TzRawViewWindow.h"

/// The raw view of LIN traffic.
class TzLinViewWindow final : public TzRawViewWindow
{
    Q_OBJECT
public:
    /// The pointers must outlive the view.
    TzLinViewWindow(TzVciDeviceManager *deviceManager, TzVciDeviceStore *deviceStore, QWidget *parent = nullptr);
    ~TzLinViewWindow() override;

private:
    static constexpr ColumnWidth columnWidths[] = {{0, 90}, {1, 120}, {2, 50},  {3, 60}, {4, 80},
                                                   {5, 50}, {6, 80},  {7, 100}, {8, 60}};
};
