// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class TzVciDeviceStore;

/// Rich text that tells a device's address, whether it is open, and which of its channels are.
QString tzVciDeviceToolTip(const TzVciDeviceStore &store, int deviceIndex);
