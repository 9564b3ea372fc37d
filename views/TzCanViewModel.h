// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "views/TzRawViewModel.h"

/// The model of a raw CAN view.
class TzCanViewModel : public TzRawViewModel
{
    Q_OBJECT
public:
    explicit TzCanViewModel(TzVciDeviceManager *timeService, QObject *parent = nullptr)
        : TzRawViewModel(TzRawViewFamily::can, timeService, parent)
    {
    }
};
