// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

#include <cstddef>

/// Files that the loaders are measured on.
namespace tzbench_files {

/// Writes a DBC file of at least @p bytes: messages of eight signals with comments, attributes, value descriptions and
/// start values, as in vehicles' files. The size grows with the number of messages alone.
void writeDbcFile(const QString &path, std::size_t bytes);

/// Writes an LDF file with as many slaves, each with four frames, signals, encodings and a place in the schedule. From
/// the sixteenth slave on the frames' identifiers are used again.
void writeLdfFile(const QString &path, int slaves);

/// The files of that suffix in the folder of that name below TZ_CORPUS, the largest first; none where the variable is
/// unset.
QStringList corpusFiles(const QString &suffix);

/// Starts the log as the program has it, into a file of that folder.
void startLog(const QString &folder);

} // namespace tzbench_files
