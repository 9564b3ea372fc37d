// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <vector>

struct DbcFile;
struct DbcMessage;

/// The text of a DBC file, made of records. Numbers are in the C locale with six significant digits, lines end in "\n",
/// unordered maps come in ascending order. Any thread.
namespace DbcStatements {

/// The whole file. Less than was read is written: message numbers stand as they are stored, without the mark of an
/// extended one; comments of nodes and special messages are left out; values of message and signal attributes have no
/// quotes.
QString fileText(const DbcFile &file);
/// @p source, which has "\n" line ends, with @p messages behind its last line that is a signal, or before everything
/// where there is none. Multiplexed signals, and factors or limits with an exponent, do not count as such a line; one
/// that cannot be searched is logged and does not count either.
QString mergedText(const QString &source, const std::vector<DbcMessage> &messages);

} // namespace DbcStatements
