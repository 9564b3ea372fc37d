// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringView>

struct DbcSignal;

namespace DbcStartValue {

/// Reads a start value, cuts its fraction off and stores it as the signal's raw value, without factor and offset, in as
/// many bits as the signal has. A text that is no number, or one beyond the signal's bits, is logged and not stored.
void apply(QStringView text, DbcSignal &signal);

} // namespace DbcStartValue
