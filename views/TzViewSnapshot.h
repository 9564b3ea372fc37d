// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoreApplication>
#include <QDateTime>
#include <QString>

class QAbstractItemModel;

/// What a view shows at one moment, as a file. UI thread, as the models are.
class TzViewSnapshot
{
    Q_DECLARE_TR_FUNCTIONS(TzViewSnapshot)
public:
    enum class Format
    {
        Asc, ///< only of a CAN view: it takes the columns of that table
        Csv, ///< header and rows, every cell quoted
        Txt  ///< header and rows, cells parted by tabs
    };

    static QString nameFilter(Format format); ///< for a file dialog, such as "CSV Files (*.csv)"
    /// @p path, with the format's extension behind it unless it ends in that, in capitals or not.
    static QString completedPath(const QString &path, Format format);
    static QString text(const QAbstractItemModel &model, Format format, const QDateTime &now);

    /// Writes the file whole, in UTF-8, over one that is there, unless a recorder writes to that.
    /// @return whether it could be opened; that it could not be written in full, as on a full disk, is only logged,
    ///         also where a file system tells that as late as when the file is closed
    static bool save(const QAbstractItemModel &model, Format format, const QString &path);
};
