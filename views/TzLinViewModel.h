// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "views/TzRawViewModel.h"

/// The model of a raw LIN view.
class TzLinViewModel : public TzRawViewModel
{
    Q_OBJECT
public:
    explicit TzLinViewModel(TzVciDeviceManager *timeService, QObject *parent = nullptr)
        : TzRawViewModel(TzRawViewFamily::lin, timeService, parent)
    {
    }
};
