// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "database/history/FileHistory.h"

#include <QLatin1String>
#include <QString>

/// The JSON file in which a file manager keeps its history: reads and writes it whole.
/// Holds its path and keys alone; any thread, though not two writers at a time.
class HistoryFile
{
public:
    enum class ReadResult
    {
        Ok,
        Missing,
        NotReadable, ///< also what is no file, such as a folder or a pipe
        Malformed,   ///< no JSON, or more than 16 MiB
    };

    /// @param filesKey     the array of files in the file's object
    /// @param encodingKey  the encoding's name in an element of that array
    HistoryFile(QString path, QLatin1String filesKey, QLatin1String encodingKey);

    const QString &path() const { return m_path; }

    /// Elements that are no objects are left out, and so are custom keys without a text; an element without an encoding
    /// is UTF-8. Logs nothing.
    /// @param problem  what is wrong with a malformed file
    ReadResult read(FileHistory &history, QString &problem) const;
    /// Renames a file that could not be used, so that the next write does not destroy what the user may still save from
    /// it; one that was set aside before is replaced. Logs where it went, or the failure.
    /// @return false where it is still in its place
    bool setAside() const;
    /// Replaces the file as a whole: what was there stays until all is written, unless the folder takes no new file.
    /// Makes the folder. Logs failures.
    bool write(const FileHistory &history) const;

private:
    QString m_path;
    QLatin1String m_filesKey;
    QLatin1String m_encodingKey;
};
