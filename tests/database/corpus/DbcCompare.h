// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/dbc/DbcFile.h"

#include <QStringList>

namespace tzcorpus {

/// How much of a message is compared.
enum class Depth
{
    description, ///< what the lines and statements of the file tell
    everything   ///< attributes and start values too
};

/// A line for every field that differs.
QStringList compareMessages(const DbcMessage &expected, const DbcMessage &actual, Depth depth);

/// The same for whole files.
QStringList compareFiles(const DbcFile &expected, const DbcFile &actual);

} // namespace tzcorpus
