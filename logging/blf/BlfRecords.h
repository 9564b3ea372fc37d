// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/blf/BlfFrame.h"
#include "logging/blf/BlfObjects.h"

namespace BLF {

// The record of each kind of object. A frame costs one allocation, for its payload; nothing is logged.

BlfFrame makeRecord(const ObjectHeader &header, const CanMessage &object);
BlfFrame makeRecord(const ObjectHeader &header, const CanErrorFrame &object);
BlfFrame makeRecord(const ObjectHeader &header, const CanStatistic &object);
BlfFrame makeRecord(const ObjectHeader &header, const CanDriverError &object);
BlfFrame makeRecord(const ObjectHeader &header, const SystemVariable &object);
BlfFrame makeRecord(const ObjectHeader &header, const CanErrorFrameExt &object);
BlfFrame makeRecord(const ObjectHeader &header, const Overrun &object);
BlfFrame makeRecord(const ObjectHeader &header, const CanFdMessage &object);
BlfFrame makeRecord(const ObjectHeader &header, const CanFdMessage64 &object);
BlfFrame makeRecord(const ObjectHeader &header, const CanFdErrorFrame64 &object);
BlfFrame makeRecord(const ObjectHeader &header, const CanSettingChanged &object);

} // namespace BLF
