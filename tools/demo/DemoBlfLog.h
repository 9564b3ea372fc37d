// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Makes the log that the demonstration converts: some seconds of frames on two CAN channels, with an error frame now
/// and then. @return false where it cannot be written
bool saveDemoBlfLog(const QString &path);
