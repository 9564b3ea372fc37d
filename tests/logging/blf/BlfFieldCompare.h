// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/blf/BlfReader.h"
#include "tests/logging/blf/BlfGolden.h"

#include <QStringList>

namespace tztest {

/// Reads the object that was peeked and compares every field of it with what the independent reader found.
/// @return a line for each difference, which begins with @p where
QStringList compareBlfObject(const QString &where, const GoldenBlfObject &expected, const BLF::ObjectHeader &header,
                             BLF::BlfReader &reader);

/// Whether compareBlfObject() knows the type.
bool isBlfRecordType(std::uint32_t type);

} // namespace tztest
