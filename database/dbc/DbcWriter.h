// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <vector>

struct DbcFile;
struct DbcMessage;

/// Writes DBC files. Not thread-safe; the file must outlive the writer and stay as it is while it writes.
class DbcWriter
{
public:
    explicit DbcWriter(const DbcFile &file);

    /// Writes the whole file. A file that exists is replaced as a whole.
    /// @param encoding  name of the codec; the locale's where it is empty or there is none of that name
    /// @return false, logged, where it cannot be written
    bool save(const QString &path, const QString &encoding);
    /// Whether the encoding that was last written goes by an ASCII name. Tells nothing about the text.
    bool isAsciiEncoding() const { return m_isAsciiEncoding; }

    /// Copies the file @p sourcePath to @p destinationPath with @p messages inserted behind its last signal line, or at
    /// its top where there is none; both may be the same file. It is read as the parser reads: a byte order mark
    /// overrides the encoding, and is kept. Lines end in "\n".
    /// @return false, logged, where one cannot be read or the other not written
    static bool merge(const QString &sourcePath, const QString &destinationPath,
                      const std::vector<DbcMessage> &messages, const QString &encoding);

private:
    const DbcFile &m_file;
    bool m_isAsciiEncoding = false;
};
