// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "logging/blf/BlfExportOptions.h"
#include "logging/blf/BlfFrame.h"
#include "tests/logging/blf/BlfGolden.h"

#include <QStringList>

#include <vector>

/// What must come of a log's objects, put together anew and plainly from the fields that an independent reader found.
namespace tztest {

/// The record of an object. Of an event only time, channel, type and description are meant, and the direction where it
/// is an error frame.
BLF::BlfFrame expectedBlfRecord(const GoldenBlfObject &object);
bool isBlfDataOrRemote(const BLF::BlfFrame &record);

/// The lines of the whole file, without line ends.
QStringList expectedCsv(const std::vector<BLF::BlfFrame> &records, const BLF::BlfExportOptions &options);
/// Likewise; the first line, which holds the date of today, is left empty.
QStringList expectedAsc(const std::vector<BLF::BlfFrame> &records, const BLF::BlfExportOptions &options);

} // namespace tztest
