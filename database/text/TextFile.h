// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// From a file on the disk to the text that the readers of the database formats work on. Any thread.
namespace Common::TextFile {

/// Larger files are refused: their text would pass what a string of the toolkit can hold.
inline constexpr qint64 maximumBytes = 512LL * 1024 * 1024;

/// The whole file as text, undecoded line ends.
/// @param encoding  see decode()
/// @return nothing where there is no such regular file, it cannot be opened or read, or it is too large
std::optional<QString> read(const QString &path, const QString &encoding);

/// Decodes as a text stream does: a byte order mark decides; without one the codec named @p encoding (trimmed); where
/// that is empty or unknown, the locale's codec. Halves of a surrogate pair become U+FFFD.
QString decode(const QByteArray &bytes, const QString &encoding);

/// Takes out block comments and makes every line end a "\n", in one pass.
///
/// A comment is what `/\*[^*]*\*+(?:[^/*][^*]*\*+)*/` matches: from a slash and a star to the next star and slash, also
/// inside quotes; one that is never closed stays. Then "\r\n" and each "\r" left become "\n".
QString prepare(QString text);

} // namespace Common::TextFile
