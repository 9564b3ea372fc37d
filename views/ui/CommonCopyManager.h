// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>

class QAbstractItemView;
class QModelIndex;
class QTableView;
class QTreeView;

/// Puts what a traffic view shows on the clipboard and says so in a short tool tip at the cursor. UI thread.
///
/// A row's line holds the display texts of all its columns, hidden ones too, parted by tabs and closed by a line feed.
/// The line of a child row begins with four blanks; a top row of a tree is expanded and brings its child rows.
/// All return false, and touch nothing, for a null view and for an index that is invalid or not one of the view's
/// model.
class CommonCopyManager : public QObject
{
    Q_OBJECT
public:
    /// The display text that the index's row has in that column.
    static bool copyData(QTableView *view, const QModelIndex &index, int column);
    static bool copyData(QTreeView *view, const QModelIndex &index, int column); ///< false also for a child row
    static bool copyRow(QTableView *view, const QModelIndex &index);
    static bool copyRow(QTreeView *view, const QModelIndex &index);
    /// The lines of all selected rows, in row order, each once. With nothing selected the clipboard is left alone and
    /// nothing is said.
    static bool copySelected(QTableView *view);
    static bool copySelected(QTreeView *view);

    enum class Content
    {
        Data,
        Row
    };
    /// Text that was taken from the view before, confirmed as copyData() or copyRow() does.
    static bool copyText(QAbstractItemView *view, const QString &text, Content content);
};
